#include "states/job.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/support.h"

namespace {

namespace fs = std::filesystem;
using states::job;
using states::read_job;

/// A copy of the smaller set's files, in the working directory.
class ReadingAJob : public testing::Test {
  protected:
    ReadingAJob() {
        fs::copy(support::data_file("crossing"), directory_.path());
        fs::current_path(directory_.path());
    }
    ~ReadingAJob() override { fs::current_path(home_); }

    /// How reading the job ends: "" or the reason.
    static std::string ending(const job* reference = nullptr) {
        const auto end = support::ending_of([&] { read_job("h2ox_02yp.fchk", reference); });
        return end ? end->text : "";
    }

    /// The amplitudes of the job's dump, which `change` may change.
    static void rewrite_dump(const std::function<void(std::vector<double>&)>& change) {
        job now = read_job("h2ox_02yp.fchk");
        std::vector<double> values(now.xpy.all().begin(), now.xpy.all().end());
        change(values);
        std::string dump = support::contents_of("h2ox_02yp.cis");
        dump.resize(dump.find("read left to right):\n") + 21);
        for (const double energy : now.energy) dump += std::to_string(energy) + '\n';
        for (const double value : values) dump += std::to_string(value) + '\n';
        support::write_file("h2ox_02yp.cis", dump);
    }

    support::scratch_directory directory_;
    fs::path home_ = fs::current_path();
};

TEST_F(ReadingAJob, TakesEverythingOfIt) {
    const job now = read_job("h2ox_02yp.fchk");
    const auto& [natom, nbasis, nbsuse, mi, ma, mci, nfc, nfv] = now.counts;
    EXPECT_EQ((std::vector{natom, nbasis, nbsuse, mi, ma, mci, nfc, nfv}),
              (std::vector{3, 22, 22, 4, 17, 4, 1, 0}));
    EXPECT_EQ(now.files.name, "h2ox_02yp");
    EXPECT_EQ(now.energy,
              (std::vector{0.342098967866, 0.416491339242, 0.416564745298, 0.482266560062}));
    const auto column = [](const flib::matrix<double>& of, std::int32_t j) {
        const auto values = of.view().column(j);
        return std::vector<double>(values.begin(), values.end());
    };
    EXPECT_THAT(column(now.tdip, 2), testing::ElementsAre(0, 0.0167, -0.7017));
    EXPECT_THAT(column(now.tdip, 4), testing::ElementsAre(0.2591, 0, 0));
    EXPECT_THAT(column(now.force, 3), testing::ElementsAre(0, -0.053891455, -0.047627626));
    EXPECT_EQ(now.moc(2, 1), -2.21205047e-02);
    EXPECT_EQ(now.moc(1, 2), 2.15313605e-01);
    EXPECT_EQ(now.amplitudes(4).size(), 68U);
    EXPECT_EQ(now.amplitudes(4)[67], 0.639298110786e-5);
    EXPECT_EQ(now.atoms.nat.all()[0], 8);
    EXPECT_NEAR(now.atoms.x(2, 2), (0.803752 + 0.01) / 0.529177249, 1e-12);
}

TEST_F(ReadingAJob, TellsWhatIsWrong) {
    const job reference = read_job("h2ox_ref.fchk");
    struct edit {
        const char* file;
        const char* from;
        const char* to;
    };
    const struct {
        std::vector<edit> edits;
        bool alone;  // without a reference
        const char* reason;
    } cases[] = {
        {{{"log", nullptr, "nonsense\n"}}, false, "log: is not a Gaussian log"},
        {{{"fchk", nullptr, "nonsense\n"}}, false, "fchk: is not a formatted checkpoint"},
        {{{"cis", nullptr, "nonsense\n"}},
         false,
         "cis: is not a dump of a Gaussian read-write file"},
        {{{"cis", nullptr, ""}}, false, "cis: "},
        {{{"log", "NFC=     1", "NFC=     3"}, {"log", "NVA=    17", "NVA=    15"}},
         false,
         "fchk: differs from the reference: 15 active virtual orbitals instead of 17, 3 frozen "
         "core "
         "orbitals instead of 1"},
        {{{"log", "NFV=     0", "NFV=     2"}, {"log", "NOA=     4", "NOA=     3"}},
         false,
         "fchk: differs from the reference: 3 active occupied orbitals instead of 4, 2 frozen "
         "virtual orbitals instead of 0"},
        {{{"fchk", "basis functions                  I               22", "basis functions I 23"},
          {"fchk", "atoms                            I                3", "atoms I 4"}},
         false,
         "fchk: differs from the reference: 4 atoms instead of 3, 23 basis functions instead of "
         "22"},
        {{{"log", "NFC=     1", "NFC=     2"}},
         true,
         "log: tells of 2 frozen core, 4 active occupied, 17 active virtual and 0 frozen virtual "
         "orbitals; the checkpoint has 22"},
        {{{"log", "NFC=     1", "NFC=     0"}},
         true,
         "log: tells of 0 frozen core, 4 active occupied, 17 active virtual and 0 frozen virtual "
         "orbitals; the checkpoint has 22"},
        {{{"log", "NFC=     1", "NFC=     2"}, {"log", "NFV=     0", "NFV=    -1"}},
         true,
         "log: tells of 2 frozen core, 4 active occupied, 17 active virtual and -1 frozen virtual "
         "orbitals; the checkpoint has 22"},
        {{{"log", "NOA=     4", "NOA=     0"}, {"log", "NFC=     1", "NFC=     5"}},
         true,
         "log: tells of 5 frozen core, 0 active occupied, 17 active virtual and 0 frozen virtual "
         "orbitals; the checkpoint has 22"},
        {{{"fchk", "independent functions            I               22",
           "independent functions I 21"},
          {"fchk", "N=         484", "N=         462"}},
         false,
         "fchk: has 21 independent functions of 22 basis functions; all must be independent"},
        {{{"fchk", "atoms                            I                3", "atoms I 2000000000"}},
         true,
         "log: is too short to hold 2000000000 atoms"},
        {{{"log", "roots to seek:     4", "roots to seek:     0"}},
         false,
         "log: tells of no roots"},
        {{{"log", "roots to seek:     4", "roots to seek:     5"}},
         false,
         "log: line 82: 'to' stands where a real number was expected"},
        {{{"log", "roots to seek", "roots"}},
         false,
         "log: Can not find keyword roots to seek stop!"},
        {{{"log", "      1          8   ", "      1         16   "}},
         false,
         "log: atom 1 is of atomic number 16 instead of 8"},
        {{{"log", "-0.7017", "    NaN"}},
         false,
         "log: the transition dipoles are not all finite numbers"},
        {{{"cis", "0.416491339242D+00", "               inf"}},
         false,
         "cis: the excitation energies are not all finite numbers"},
        {{{"cis", "0.639298110786D-05", "               NaN"}},
         false,
         "cis: the amplitudes of root 4 are not all finite numbers"},
        {{{"cis", "0.639298110786D-05", ""}}, false, "cis: line 121: the file ends where"},
        {{{"fchk", "-9.95785253E-01", "      -Infinity"}},
         false,
         "fchk: the MO coefficients are not all finite numbers"},
    };
    for (const auto& [edits, alone, reason] : cases) {
        std::vector<std::string> before;
        for (const auto& [file, from, to] : edits) {
            const std::string name = std::string("h2ox_02yp.") + file;
            before.push_back(support::contents_of(name));
            support::write_file(name,
                                from == nullptr ? to : support::replaced(before.back(), from, to));
        }
        EXPECT_THAT(ending(alone ? nullptr : &reference),
                    testing::StartsWith(std::string("h2ox_02yp.") + reason));
        for (std::size_t i = edits.size(); i-- > 0;) {
            support::write_file(std::string("h2ox_02yp.") + edits[i].file, before[i]);
        }
    }
    fs::remove("h2ox_02yp.cis");
    EXPECT_EQ(ending(), "h2ox_02yp.cis: cannot be opened: No such file or directory");
}

TEST_F(ReadingAJob, WantsAmplitudesOfEveryRoot) {
    rewrite_dump([](std::vector<double>& xpy) { xpy[2 * 68 * 3] = 0.5; });
    EXPECT_EQ(ending(), "");
    // Component 2 is not looked at.
    rewrite_dump([](std::vector<double>& xpy) { std::fill_n(xpy.begin() + 5 * 68, 68, 0); });
    EXPECT_EQ(ending(), "");
    rewrite_dump([](std::vector<double>& xpy) { std::fill_n(xpy.begin() + 4 * 68, 68, 0); });
    EXPECT_EQ(ending(), "h2ox_02yp.cis: the amplitudes of root 3 are all zero");
}

TEST_F(ReadingAJob, FindsItsFiles) {
    const states::job_files files = states::files_of("/some where/a.b.fchk");
    EXPECT_EQ(files.name, "a.b");
    EXPECT_EQ(files.checkpoint, "/some where/a.b.fchk");
    EXPECT_EQ(files.log, "a.b.log");
    EXPECT_EQ(files.dump, "a.b.cis");
    const auto end = support::ending_of([] { states::files_of("there/.fchk"); });
    EXPECT_THAT(end->text, testing::StartsWith("there/.fchk: cannot be a job: "));
}

}  // namespace
