#include "sgn/job/job.h"

#include <gtest/gtest.h>

#include <atomic>
#include <iomanip>
#include <sstream>
#include <thread>

#include "flib/io/number.h"
#include "support/dump.h"
#include "support/support.h"

namespace {

namespace fs = std::filesystem;
using sgn::job;
using sgn::read_job;
using support::contents_of;

/// A copy of the smaller set's files, in the working directory.
class ReadingAJob : public testing::Test {
  protected:
    ReadingAJob() { fs::copy(support::data_file("crossing"), "."); }

    /// How reading the job ends: "" or the reason.
    static std::string ending(const job* reference = nullptr) {
        const auto end = support::ending_of([&] { read_job("h2ox_02yp.fchk", reference); });
        return end ? end->text : "";
    }

    support::working_directory here_;
};

TEST_F(ReadingAJob, TakesEverythingOfIt) {
    const job now = read_job("h2ox_02yp.fchk");
    const auto& [natom, nbasis, nbsuse, mi, ma, mci, nfc, nfv] = now.counts;
    std::ostringstream text;
    text.precision(12);
    const auto add = [&](const char* name, const auto& numbers, int per_line) {
        text << name;
        int count = 0;
        for (const auto number : numbers) {
            text << (count++ % per_line == 0 ? "\n" : "") << std::setw(20) << number;
        }
        text << '\n';
    };
    std::vector<double> angstrom;
    for (const double x : now.atoms.x.view().all()) angstrom.push_back(0.529177249 * x);
    add("counts", std::vector{natom, nbasis, nbsuse, mi, ma, mci, nfc, nfv}, 8);
    add("atoms", now.atoms.nat.all(), 3);
    add("x (Angstrom)", angstrom, 3);
    add("mass", now.atoms.mass.all(), 3);
    add("force", now.force.view().all(), 3);
    add("tdip", now.tdip.view().all(), 3);
    add("energy", now.energy, 5);
    add("states", std::vector{now.states}, 1);
    add("orbital 2", now.moc.view().column(2), 5);
    add("orbital 22", now.moc.view().column(22), 5);
    add("amplitudes 1", now.amplitudes(1), 5);
    add("amplitudes 4", now.amplitudes(4), 5);
    EXPECT_EQ(text.str(), contents_of(support::data_file("states/job.txt")));
    const auto& [name, checkpoint, log, dump] = sgn::files_of("/some where/a.b.fchk");
    EXPECT_EQ(name + ' ' + checkpoint + ' ' + log + ' ' + dump,
              "a.b /some where/a.b.fchk a.b.log a.b.cis");
    EXPECT_EQ(support::ending_of([] { sgn::files_of("there/.fchk"); })->text,
              "there/.fchk: cannot be a job: without directory and extension nothing is left as "
              "its name");
}

TEST_F(ReadingAJob, TellsWhatIsWrong) {
    const job reference = read_job("h2ox_ref.fchk");
    const auto rows = support::table_of("states/refused_jobs.txt");
    for (std::size_t i = 1; i < rows.size(); ++i) {
        const auto& row = rows[i];
        for (const std::size_t edit : {0, 3}) {
            const auto &from = row[edit + 1], to = row[edit + 2];
            const std::string file = "h2ox_02yp." + row[edit];
            if (row[edit].empty()) continue;
            support::write_file(file,
                                from.empty() ? to : support::replaced(contents_of(file), from, to));
        }
        EXPECT_EQ(ending(row[6] == "alone" ? nullptr : &reference),
                  row[7].empty() ? "" : "h2ox_02yp." + row[7])
            << row[0] << ": " << row[1] << " > " << row[2];
        for (const auto& entry : fs::directory_iterator(support::data_file("crossing"))) {
            fs::copy(entry, ".", fs::copy_options::overwrite_existing);
        }
    }
    fs::remove("h2ox_02yp.cis");
    EXPECT_EQ(ending(), "h2ox_02yp.cis: cannot be opened: No such file or directory");
}

/// The dump of the job, of which roots can be taken out.
struct dump : support::dump {
    static constexpr std::size_t words = 12;
    static constexpr std::size_t roots = 16;
    static constexpr std::size_t block = 68;  // amplitudes of a root and spin
    static constexpr std::size_t energies = words + 4 * block * roots;

    dump() : support::dump("h2ox_02yp.cis") {}
    /// X+Y or X-Y of a root and spin.
    std::span<std::string> amplitudes(std::size_t root, bool beta, bool minus) {
        const std::size_t before = 2 * (root - 1 + (minus ? roots : 0)) + (beta ? 1 : 0);
        return std::span(values).subspan(words + block * before, block);
    }
    /// Keeps so many roots; without X-Y and energies if `without_rest`.
    void cut(std::size_t left, bool without_rest) {
        const dump whole = *this;
        const auto take = [&](std::size_t from, std::size_t count) {
            const auto first = whole.values.begin() + static_cast<std::ptrdiff_t>(from);
            values.insert(values.end(), first, first + static_cast<std::ptrdiff_t>(count));
        };
        values.resize(words);
        char word[40];
        std::snprintf(word, sizeof word, "%.8E", static_cast<double>(left) * 0x1p-1074);
        values[6] = word;
        take(words, 2 * block * left);
        if (without_rest) return;
        take(words + 2 * block * roots, 2 * block * left);
        take(energies, left);
    }
};

void scale(std::span<std::string> values, double factor) {
    for (std::string& value : values) {
        double number = 0;
        ASSERT_EQ(flib::parse_real(value, number), flib::number_error::none) << value;
        char scaled[40];
        std::snprintf(scaled, sizeof scaled, "%.8E", number * factor);
        value = scaled;
    }
}

TEST_F(ReadingAJob, JudgesTheAmplitudesOfEveryState) {
    const dump whole;
    const std::string normal = "h2ox_02yp.cis: the amplitudes of root 4 are not normalised as ";
    const struct {
        std::size_t root;
        bool of_plus, of_minus;  // are scaled
        bool without_rest;
        double factor;
        std::string expected;
    } cases[] = {
        {4, true, false, false, 1.01,
         normal + "amplitudes are: (X+Y)(X-Y) sums to 0.5000 (alpha) and 0.5050 (beta) instead of "
                  "0.5"},
        {4, false, true, false, 1.01,
         normal + "amplitudes are: (X+Y)(X-Y) sums to 0.5000 (alpha) and 0.5050 (beta) instead of "
                  "0.5"},
        {4, true, false, true, 0.1,
         normal + "amplitudes are: (X+Y)(X+Y) sums to 0.5000 (alpha) and 0.0050 (beta) instead of "
                  "0.1 to 5"},
        {4, true, true, false, 0.9999, ""},
        // Roots that are no states are not looked at.
        {5, true, true, false, 7, ""},
        {4, true, false, true, 1.1,
         "h2ox_02yp.cis: the amplitudes of root 4 are neither a singlet's nor a triplet's: those "
         "of "
         "beta spin neither equal those of alpha spin nor their negatives"},
    };
    for (const auto& [root, of_plus, of_minus, without_rest, factor, expected] : cases) {
        dump changed = whole;
        if (of_plus) scale(changed.amplitudes(root, true, false), factor);
        if (of_minus) scale(changed.amplitudes(root, true, true), factor);
        if (without_rest) changed.cut(6, true);
        changed.write("h2ox_02yp.cis");
        EXPECT_EQ(ending(), expected) << root << ' ' << factor;
    }
}

TEST_F(ReadingAJob, SeesSingletsAndTriplets) {
    dump changed;
    for (const bool minus : {false, true}) scale(changed.amplitudes(3, true, minus), -1);
    changed.write("h2ox_02yp.cis");
    const job now = read_job("h2ox_02yp.fchk");
    std::string spins;
    for (std::int32_t root = 1; root <= now.states; ++root) {
        spins += std::string(name_of(now.spin_of(root).value())) + ' ';
    }
    EXPECT_EQ(spins, "singlet singlet triplet singlet ");
}

TEST_F(ReadingAJob, FollowsDumpsOfOtherShapes) {
    const dump whole;
    const std::string log = contents_of("h2ox_02yp.log");
    const auto text = [](const job& now) {
        std::ostringstream told;
        told.precision(8);
        told << now.states << ' ' << now.counts.mci << ' ' << now.spin.size();
        for (const double energy : now.energy) told << ' ' << energy;
        return told.str();
    };
    const job before = read_job("h2ox_02yp.fchk");
    const auto expect = [&](const std::string& expected) {
        const job now = read_job("h2ox_02yp.fchk");
        EXPECT_EQ(text(now), expected);
        for (std::int32_t root = 1; root <= now.states; ++root) {
            EXPECT_TRUE(std::ranges::equal(now.amplitudes(root), before.amplitudes(root)));
        }
    };
    const std::string exact = " 0.34209897 0.41649134 0.41656475 0.48226656";
    const std::string from_log = " 0.34209944 0.41649109 0.41656459 0.48226503";
    expect("4 16 4" + exact);
    // Another number of roots than the log sought; no X-Y, then the energies are in the log alone.
    dump cut = whole;
    cut.cut(5, false);
    cut.write("h2ox_02yp.cis");
    expect("4 16 4" + exact);
    cut = whole;
    cut.cut(4, true);
    cut.write("h2ox_02yp.cis");
    expect("4 16 4" + from_log);
    // A route without #p does not have the roots printed.
    support::write_file("h2ox_02yp.log", support::replaced(log, "roots to seek", "roots"));
    expect("4 4 4" + from_log);
    support::write_file("h2ox_02yp.log", support::replaced(log, " eV ", " ev "));
    EXPECT_EQ(ending(),
              "h2ox_02yp.cis: does not tell where it holds the excitation energies, and "
              "h2ox_02yp.log has none of state 1");
    support::write_file("h2ox_02yp.log", support::replaced(log, "State   3:", "State   4:"));
    EXPECT_EQ(ending(),
              "h2ox_02yp.cis: does not tell where it holds the excitation energies, and "
              "h2ox_02yp.log has none of state 3");
    support::write_file("h2ox_02yp.log", log);
    cut = whole;
    cut.cut(3, false);
    cut.write("h2ox_02yp.cis");
    EXPECT_EQ(ending(), "h2ox_02yp.cis: holds 3 roots, the log has 4 states");

    // Without the twelve words the roots to seek of the log say where the amplitudes begin.
    dump plain = whole;
    plain.cut(5, true);
    std::fill_n(plain.values.begin(), dump::words, "0.25");
    plain.values.erase(plain.values.begin(), plain.values.begin() + 7);
    plain.write("h2ox_02yp.cis");
    support::write_file("h2ox_02yp.log", support::replaced(log, "seek:    16", "seek:     5"));
    expect("4 5 0" + from_log);
    // What the second component is then is not known.
    dump half = plain;
    std::fill_n(half.values.begin() + 5 + 3 * dump::block, dump::block, "0.0");
    half.write("h2ox_02yp.cis");
    expect("4 5 0" + from_log);
    plain.write("h2ox_02yp.cis");
    support::write_file("h2ox_02yp.log", support::replaced(log, "seek:    16", "seek:     3"));
    EXPECT_EQ(text(read_job("h2ox_02yp.fchk")), "3 3 0 0.34209944 0.41649109 0.41656459");
    support::write_file("h2ox_02yp.log", support::replaced(log, "roots to seek", "roots"));
    EXPECT_EQ(ending(),
              "h2ox_02yp.log: tells of no roots to seek, without which it is not known where the "
              "amplitudes begin in h2ox_02yp.cis");
}

TEST_F(ReadingAJob, NeedsTheOrbitalsOfTheReference) {
    fs::copy(support::data_file("dependent"), ".",
             fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    const job reference = read_job("wd_ref.fchk");
    const job now = read_job("wd_03zp.fchk", &reference);
    EXPECT_EQ(now.moc.view().columns(), 20);
    EXPECT_EQ(now.moc(22, 20), 0.231565604);
    EXPECT_EQ(
        ending(&reference),
        "h2ox_02yp.fchk: has 22 orbitals of 22 basis functions, the reference has 20: as many "
        "are needed in all jobs of a set. Run them with one threshold for linear dependences "
        "at which all keep as many (Gaussian's IOp(3/59=N)), or with a basis set without near "
        "dependences");
}

TEST_F(ReadingAJob, SeesFilesThatChange) {
    for (const char* const name : {"h2ox_02yp.log", "h2ox_02yp.fchk", "h2ox_02yp.cis"}) {
        std::atomic<bool> enough = false;
        std::thread writer([&] {
            for (fs::file_time_type time{}; !enough; fs::last_write_time(name, time)) {
                time += std::chrono::seconds(1);
            }
        });
        // The writer needs a moment on a processor while the job is being read.
        std::string end;
        for (int attempt = 0; end.empty() && attempt < 1000; ++attempt) end = ending();
        enough = true;
        writer.join();
        EXPECT_EQ(end, std::string(name) + ": was changed while it was being read");
    }
}

}  // namespace
