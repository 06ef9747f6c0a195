// Gaussian inputs taken apart and put together again.
#include <algorithm>

#include "sgn/inputs/input.h"
#include "support.h"

namespace {

using namespace sgn::inputs;

void check(std::string_view text) {
    const job_template job = parse_input("fuzz.gjf", text);
    const decimal step{1, 2};
    const std::string reference = job.reference("a");
    // What was written needs no change, and says the same.
    const job_template again = parse_input("again.gjf", reference);
    fuzz::require(again.reference("a") == reference, "the written input is changed again");
    fuzz::require(again.atoms.size() == job.atoms.size(), "another number of atoms");
    for (std::size_t i = 0; i < std::min<std::size_t>(job.atoms.size(), 3); ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            decimal plus;
            decimal minus;
            if (!add(job.atoms[i].x[k].value, step, plus)) continue;
            if (!add(job.atoms[i].x[k].value, negative(step), minus)) continue;
            const job_template up = parse_input("up", job.displaced("a", i, k, step));
            const job_template down = parse_input("down", job.displaced("a", i, k, negative(step)));
            fuzz::require(up.atoms.size() == job.atoms.size(), "a displaced job has other atoms");
            for (std::size_t j = 0; j < job.atoms.size(); ++j) {
                for (std::size_t l = 0; l < 3; ++l) {
                    const decimal& here = job.atoms[j].x[l].value;
                    const bool moved = i == j && k == l;
                    fuzz::require(up.atoms[j].x[l].value == (moved ? plus : here) &&
                                      down.atoms[j].x[l].value == (moved ? minus : here),
                                  "another coordinate than displaced");
                }
            }
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    fuzz::ending_of([&] { check(text); });
    return 0;
}
