// Derivatives of a set of result files, the reference first, what the sum rules say, wrong signs.
#include <sgn/set/suspects.h>

#include <cstdio>
#include <exception>

int main(int argc, char** argv) {
    try {
        std::vector<sgn::result_file> files;
        for (int i = 1; i < argc; ++i) files.push_back({argv[i], sgn::read_sgn_file(argv[i])});
        const auto set = sgn::make_set(files.at(0), std::span(files).subspan(1));
        for (const auto& misfit : set.misfits) std::printf("%s\n", misfit.reason.c_str());
        const auto of = sgn::differentiate(set);
        for (std::size_t c = 0; c < of.dipole.rows; ++c)  // au by Bohr: 1x, 1y, 1z, 2x ...
            std::printf("%8.4f %8.4f %8.4f\n", of.dipole(c, 0), of.dipole(c, 1), of.dipole(c, 2));
        const auto rules = sgn::dipole_rules(set, of);
        const char* hold = rules.satisfied ? "the sums hold" : "the sums fail";
        std::printf("%s\n", rules.judged ? hold : rules.why_not.c_str());
        for (const auto& flip : sgn::find_suspects(set, of, rules).flips)
            for (const auto job : flip) std::printf("wrong: %s\n", set.jobs[job].name.c_str());
    } catch (const std::exception& error) {
        std::printf("%s\n", error.what());
        return 2;
    }
}
