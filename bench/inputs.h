// Made-up inputs of any size, in the layout of real files: a dump begins with its twelve words and
// holds X+Y, X-Y and the energies of all the roots that were kept; log and checkpoint tell of the
// states only.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace bench {

/// A directory of its own, removed with all it holds when this goes.
class temporary_directory {
  public:
    temporary_directory() {
        std::string name = std::filesystem::temp_directory_path() / "stigruz-bench-XXXXXX";
        if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary directory");
        path_ = name;
    }
    ~temporary_directory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    temporary_directory(const temporary_directory&) = delete;
    temporary_directory& operator=(const temporary_directory&) = delete;

    std::string file(const std::string& name) const { return path_ / name; }

  private:
    std::filesystem::path path_;
};

/// How large a job is.
struct job_size {
    std::int32_t natom = 3;
    std::int32_t high_layer = 0;  // atoms of an ONIOM job's high layer; 0 for a plain job
    std::int32_t nbasis = 22;
    std::int32_t occupied = 4;  // without the one frozen core orbital
    std::int32_t states = 4;
    std::int32_t roots = 4 * states;
    std::int64_t log_bytes = 0;  // optimisation steps fill the log up to about this length

    std::int32_t virtuals() const { return nbasis - occupied - 1; }
    /// Amplitudes of a root and spin.
    std::int64_t amplitudes() const { return std::int64_t{occupied} * virtuals(); }
};

void write_log(const job_size& size, const std::string& path);
void write_checkpoint(const job_size& size, const std::string& path);
void write_dump(const job_size& size, const std::string& path);

/// The three files of a job, `stem`.log, .fchk and .cis.
void write_job(const job_size& size, const std::string& stem);

/// `count` numbers as a checkpoint ('E') or a dump ('D') prints them, five to a line; half of them
/// are noise around 1e-16 when `noisy`.
std::string number_lines(char exponent_letter, std::int64_t count, bool noisy);

}  // namespace bench
