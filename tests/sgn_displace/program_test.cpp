// sgn_displace as its users run it.
#include <gtest/gtest.h>

#include "support/session.h"

namespace {

TEST(SgnDisplace, SaysAndWritesThis) {
    const support::scratch_directory scratch;
    for (const char* const input : {"h2o.gjf", "oniom.com"}) {
        std::filesystem::copy(support::data_file("sgn_displace") + "/" + input, scratch.path());
    }
    support::expect_session("sgn_displace/session.txt", scratch.path());
}

}  // namespace
