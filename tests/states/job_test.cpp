#include "states/job.h"

#include <gtest/gtest.h>

#include <atomic>
#include <sstream>
#include <thread>

#include "support/support.h"

namespace {

namespace fs = std::filesystem;
using states::job;
using states::read_job;
using support::contents_of;

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

    support::scratch_directory directory_;
    fs::path home_ = fs::current_path();
};

TEST_F(ReadingAJob, TakesEverythingOfIt) {
    const job now = read_job("h2ox_02yp.fchk");
    const auto& [natom, nbasis, nbsuse, mi, ma, mci, nfc, nfv] = now.counts;
    std::ostringstream text;
    text.precision(12);
    const auto add = [&](const char* name, const auto& numbers) {
        text << name;
        for (const auto number : numbers) text << ' ' << number;
        text << '\n';
    };
    add("counts", std::vector{natom, nbasis, nbsuse, mi, ma, mci, nfc, nfv});
    add("atoms", now.atoms.nat.all());
    add("x", now.atoms.x.view().all());
    add("mass", now.atoms.mass.all());
    add("force", now.force.view().all());
    add("tdip", now.tdip.view().all());
    add("energy", now.energy);
    add("orbital 2", now.moc.view().column(2));
    add("orbital 22", now.moc.view().column(22));
    add("amplitudes 1", now.amplitudes(1));
    add("amplitudes 4", now.amplitudes(4));
    EXPECT_EQ(text.str(), contents_of(support::data_file("states/job.txt")));
    const auto& [name, checkpoint, log, dump] = states::files_of("/some where/a.b.fchk");
    EXPECT_EQ(name + ' ' + checkpoint + ' ' + log + ' ' + dump,
              "a.b /some where/a.b.fchk a.b.log a.b.cis");
    EXPECT_EQ(support::ending_of([] { states::files_of("there/.fchk"); })->text,
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

TEST_F(ReadingAJob, WantsAmplitudesOfEveryRoot) {
    const std::string dump = contents_of("h2ox_02yp.cis");
    const std::size_t header = dump.find("right):\n") + 8;
    // Component 2 of the third root is not looked at, component 1 is.
    for (const std::size_t component : {2, 1}) {
        std::istringstream values(dump.substr(header));
        std::string changed = dump.substr(0, header), value;
        for (std::size_t i = 0; values >> value; ++i) {
            const std::size_t block = (i - 4) / 68;  // behind four energies
            changed += (i >= 4 && block == 3 + component ? "0.0" : value) + '\n';
        }
        support::write_file("h2ox_02yp.cis", changed);
        EXPECT_EQ(ending(),
                  component == 1 ? "h2ox_02yp.cis: the amplitudes of root 3 are all zero" : "");
    }
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
