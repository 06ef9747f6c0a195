#include "sgn/job/density.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "flib/excited/get_ci_density_nbasis_nbsuse.h"
#include "support/support.h"

namespace {

namespace fs = std::filesystem;

/// The density's elements, each summed on its own, over all orbitals.
std::vector<double> by_triple_loop(const sgn::job& of, std::int32_t root) {
    const auto& [natom, nbasis, nbsuse, mi, ma, mci, nfc, nfv] = of.counts;
    const std::span<const double> z = of.amplitudes(root);
    std::vector<double> density;
    for (std::int32_t q = 1; q <= nbasis; ++q) {
        for (std::int32_t p = 1; p <= nbasis; ++p) {
            double element = 0;
            for (std::int32_t i = 0; i < mi; ++i) {
                double half = 0;
                for (std::int32_t a = 0; a < ma; ++a) {
                    half += of.moc(p, nfc + mi + a + 1) * z[static_cast<std::size_t>(i * ma + a)];
                }
                element += half * of.moc(q, nfc + i + 1);
            }
            density.push_back(element);
        }
    }
    return density;
}

TEST(TransitionDensity, IsThatOfThePlainSums) {
    const fs::path home = fs::current_path();
    for (const auto& [set, checkpoint] :
         {std::pair{"crossing", "h2ox_02yp.fchk"}, std::pair{"dependent", "wd_ref.fchk"}}) {
        fs::current_path(support::data_file(set));
        const sgn::job now = sgn::read_job(checkpoint);
        fs::current_path(home);
        for (const std::int32_t root : {1, now.states}) {
            const auto density = transition_density(now, root);
            EXPECT_TRUE(std::ranges::equal(density.view().all(), by_triple_loop(now, root)))
                << set << ' ' << root;
        }
        for (const std::int32_t root : {0, now.states + 1}) {
            const auto end = support::ending_of([&] { transition_density(now, root); });
            EXPECT_EQ(end->text, "there is no root " + std::to_string(root) + " of " +
                                     std::to_string(now.states));
        }
    }
}

}  // namespace
