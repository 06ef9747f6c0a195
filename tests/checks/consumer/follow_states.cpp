// Every state of a reference job, followed into other jobs: root, sign and size of the overlap.
#include <sgn/states/follow_jobs.h>

#include <cstdio>
#include <exception>

int main(int argc, char** argv) {
    try {
        const std::vector<std::string> names(argv + 1, argv + argc);
        sgn::job first = sgn::read_job(names.at(0));  // with its log and dump beside us
        std::vector<std::int32_t> wanted;
        for (std::int32_t state = 1; state <= first.states; ++state) wanted.push_back(state);
        const auto reference = sgn::prepare(std::move(first), wanted);
        for (const auto& job : sgn::follow_jobs(reference, std::span(names).subspan(1), {})) {
            if (!job.followed) std::printf("%s\n", job.reason().c_str());
            if (!job.followed) continue;
            for (const auto& state : job.followed->states)  // root 0: lost
                std::printf("%s: state %d is root %d, overlap %+.4f\n", job.name.c_str(),
                            state.state, state.root, state.sign * state.overlap);
        }
    } catch (const std::exception& error) {
        std::printf("%s\n", error.what());
        return 2;
    }
}
