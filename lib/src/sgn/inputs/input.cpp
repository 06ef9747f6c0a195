#include "sgn/inputs/input.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <optional>

#include "flib/io/number.h"
#include "flib/io/stop_run.h"
#include "flib/text/string.h"
#include "flib/util/file.h"
#include "sgn/inputs/atom_line.h"
#include "sgn/inputs/layers.h"
#include "sgn/set/listed.h"

namespace sgn::inputs {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view blanks = " \t\r";

struct line {
    std::size_t begin = 0;   // offset in the file
    std::string_view text;   // without newline
    std::string_view meant;  // without comment and blanks at either end

    bool is_comment() const { return meant.empty() && text.find('!') != text.npos; }
    bool is_blank() const { return meant.empty() && !is_comment(); }
};

std::string_view trimmed(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

std::vector<line> lines_of(std::string_view text) {
    std::vector<line> lines;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        const std::string_view all = text.substr(begin, end - begin);
        lines.push_back({begin, all, trimmed(all.substr(0, all.find('!')))});
        begin = end + 1;
    }
    return lines;
}

constexpr std::string_view slashes = "/\\";

bool has_directory(std::string_view path) {
    return path.find_first_of(slashes) != std::string_view::npos;
}

/// What a Link 0 command sets: "chk" of "%Chk=job.chk".
std::string link0_name(std::string_view command) {
    const std::string_view name = command.substr(1, command.find('=') - 1);
    return flib::strlowcase(trimmed(name));
}

class input_parser {
  public:
    input_parser(std::string_view file, std::string_view text, std::string_view way)
        : file_(file), text_(text), way_(way), lines_(lines_of(text)) {}

    job_template parse() {
        refuse_what_is_no_input();
        result_.end_of_line =
            !lines_.empty() && lines_.front().text.ends_with('\r') ? "\r\n" : "\n";
        link0();
        route();
        title();
        charges();
        atoms();
        return std::move(result_);
    }

  private:
    [[noreturn]] void fail(std::string_view message, std::optional<std::size_t> at = {}) const {
        const std::size_t index = std::min(at.value_or(next_), lines_.size());
        throw flib::io_error(file_, static_cast<std::int64_t>(index) + 1, message);
    }
    [[noreturn]] void fail_at_end(std::string_view expected) const {
        throw flib::io_error(file_, static_cast<std::int64_t>(lines_.size()),
                             "the file ends where " + std::string(expected) + " was expected");
    }

    void refuse_what_is_no_input() const {
        for (std::size_t i = 0; i < lines_.size(); ++i) {
            if (lines_[i].text.find('\0') != std::string_view::npos) {
                fail("holds a byte 0, so it is no text", i);
            }
            if (flib::strlowcase(lines_[i].meant.substr(0, 9)) == "--link1--") {
                fail("'--Link1--' begins another job; give an input with one job", i);
            }
        }
    }

    /// The next line that is no comment, if it is not blank.
    const line* peek() {
        while (next_ < lines_.size() && lines_[next_].is_comment()) ++next_;
        return next_ < lines_.size() && !lines_[next_].is_blank() ? &lines_[next_] : nullptr;
    }

    void skip_blank_line(std::string_view expected) {
        if (next_ == lines_.size()) fail_at_end(expected);
        ++next_;
    }

    void tell(std::string text) { result_.told.push_back(std::move(text)); }

    // Lines that begin with "%", before the route.
    void link0() {
        std::size_t kept_from = 0;
        const auto keep_to = [&](std::size_t end, std::size_t go_on) {
            result_.link0 += text_.substr(kept_from, end - kept_from);
            kept_from = go_on;
        };
        const auto drop_line = [&] {
            keep_to(lines_[next_].begin,
                    next_ + 1 < lines_.size() ? lines_[next_ + 1].begin : text_.size());
        };
        for (;; ++next_) {
            if (next_ == lines_.size()) fail_at_end("a route (#...)");
            const line& at = lines_[next_];
            if (at.meant.starts_with('#')) break;
            if (at.meant.empty()) continue;
            if (!at.meant.starts_with('%')) {
                fail("expected a Link 0 command (%...) or the route (#...), not '" +
                     flib::printable(at.meant) + "'");
            }
            const std::string name = link0_name(at.meant);
            const std::string_view value = flib::after_first('=', at.meant);
            if (name == "chk") {
                checkpoint_ = trimmed(value);
                if (has_directory(value)) {
                    tell("%chk loses its directory: checkpoints are written where the jobs run");
                }
                drop_line();
            } else if (name == "rwf" && has_directory(value)) {
                tell("%rwf keeps its directory, but gets the name of each job");
                for (const file_place& file : read_write_files(value)) {
                    keep_to(file.begin, file.end);
                    result_.own_names.push_back(result_.link0.size());
                    result_.link0 += file.ending;
                }
            } else if (name == "rwf") {
                tell("%rwf left out: the amplitudes are dumped from the checkpoint");
                drop_line();
            } else if (name == "int" || name == "d2e" || name == "scr" || name == "skr") {
                tell("%" + name + " left out: the jobs would share the file");
                drop_line();
            } else if (name == "oldchk") {
                old_checkpoint_ = true;
                const std::string_view path = trimmed(value);
                if (!needs_way(path)) continue;
                const auto place = static_cast<std::size_t>(path.data() - text_.data());
                keep_to(place, place);
                result_.link0.append(way_);
                tell_way("%oldchk=", path);
            }
        }
        keep_to(lines_[next_].begin, kept_from);
    }

    struct file_place {
        std::size_t begin = 0;  // of the name behind the directory: offset in the file
        std::size_t end = 0;
        std::string ending;  // what follows a job's name there
    };
    /// The files of "PLACE" or "PLACE,SIZE,PLACE,SIZE ...", what a %rwf is set to. Each gets a name
    /// of its own, as several may be in one directory.
    std::vector<file_place> read_write_files(std::string_view value) const {
        std::vector<file_place> files;
        bool is_size = false;
        for (std::size_t begin = 0; begin <= value.size(); is_size = !is_size) {
            const std::size_t end = std::min(value.find(',', begin), value.size());
            const std::string_view path = trimmed(value.substr(begin, end - begin));
            if (!is_size && !path.empty()) {
                const std::string_view name = path.substr(path.find_last_of(slashes) + 1);
                const auto place = static_cast<std::size_t>(name.data() - text_.data());
                std::string ending = ".rwf";
                if (!files.empty()) ending.insert(0, '_' + std::to_string(files.size() + 1));
                files.push_back({place, place + name.size(), ending});
            }
            begin = end + 1;
        }
        return files;
    }

    void route() {
        const std::size_t first = next_;
        std::string keywords;
        std::size_t last = next_;
        for (; peek() != nullptr; ++next_) {
            keywords.append(lines_[next_].meant).append(" ");
            last = next_;
        }
        // "#", then the level of output, which stands alone.
        const std::size_t separator = keywords.find_first_of(" \t\r,/", 1);
        const char level = separator == 2 ? flib::to_lower(keywords[1]) : ' ';
        const bool has_level = level == 'n' || level == 'p' || level == 't';
        keywords.erase(0, has_level ? 2 : 1);
        try {
            result_.kind = judge_route(parse_route(keywords));
        } catch (const flib::io_error&) {
            throw;
        } catch (const flib::run_error& error) {
            fail(error.what(), first);
        }
        write_route(first, last, has_level ? std::string(1, level) : "");
    }

    /// Begins the body with the route, line `first` to line `last`.
    void write_route(std::size_t first, std::size_t last, const std::string& level) {
        const job_kind& kind = result_.kind;
        std::string& body = result_.body;
        const std::size_t hash = lines_[first].begin + lines_[first].text.find('#');
        body = text_.substr(lines_[first].begin, hash + 1 - lines_[first].begin);
        std::size_t from = hash + 1 + level.size();
        if (level == "p") {
            body += text_[hash + 1];
        } else {
            body += 'p';
            if (from < text_.size() &&
                std::string_view(" \t\r\n,/").find(text_[from]) == std::string_view::npos)
                body += ' ';
            tell("#p written for #" + level + ": the log must be a detailed one");
        }
        const auto end_of = [&](const line& at) {
            return static_cast<std::size_t>(at.meant.data() + at.meant.size() - text_.data());
        };
        std::string missing;
        if (!kind.nosymm) missing += " nosymm";
        if (!kind.force) missing += " force";
        const std::size_t end = std::max(end_of(lines_[last]), from);
        body += text_.substr(from, end - from);
        if (!missing.empty()) {
            constexpr std::size_t widest = 79;
            const std::size_t width = end - lines_[last].begin + missing.size();
            body += width > widest ? result_.end_of_line + missing.substr(1) : missing;
            tell("added to the route:" + missing);
        }
        from = end;
        body_from_ = body.size();
        text_from_ = from;
        body += text_.substr(from);
        for (const std::string& each : kind.unknown) {
            tell(flib::quoted(each) +
                 " in the route is not known here: it stands in every input as it is");
        }
        if (kind.root != 1) {
            tell("root=" + std::to_string(kind.root) +
                 ": the forces are those of that state, but stigruz takes the sign and dipole of "
                 "the first (sgn_states follows the others)");
        }
        if (kind.reads_checkpoint && !old_checkpoint_) read_old_checkpoint(first);
    }

    /// What is read from the checkpoint is read from that of the input, which the jobs do not
    /// share.
    void read_old_checkpoint(std::size_t route) {
        if (checkpoint_.empty()) {
            fail("the route reads from a checkpoint, but neither %chk nor %oldchk names one",
                 route);
        }
        const std::string path =
            std::string(needs_way(checkpoint_) ? way_ : "").append(checkpoint_);
        result_.link0.append("%oldchk=").append(path).append(result_.end_of_line);
        tell("%oldchk=" + flib::printable(path) + " added: the route reads from it");
    }

    void title() {
        skip_blank_line("the blank line after the route");
        if (peek() == nullptr) {
            if (next_ == lines_.size()) fail_at_end("the title");
            fail("expected the title, not a second blank line");
        }
        while (peek() != nullptr) ++next_;
    }

    void charges() {
        skip_blank_line("the blank line after the title");
        const line* at = peek();
        if (at == nullptr) {
            if (next_ == lines_.size()) fail_at_end("charge and multiplicity");
            fail("expected charge and multiplicity, not a second blank line");
        }
        std::vector<std::int32_t> numbers;
        for (const std::string_view item : items_of(at->meant)) {
            std::int32_t number = 0;
            if (flib::parse_integer(item, number) != flib::number_error::none) {
                fail("expected charge and multiplicity, not '" + flib::printable(at->meant) + "'");
            }
            numbers.push_back(number);
        }
        if (numbers.empty() || numbers.size() % 2 != 0)
            fail("charges and multiplicities must come in pairs");
        bool singlet = false;
        for (std::size_t i = 1; i < numbers.size(); i += 2) singlet = singlet || numbers[i] == 1;
        if (!singlet) {
            fail("multiplicity " + std::to_string(numbers[1]) +
                 ": only amplitudes of closed shells can be used");
        }
        ++next_;
    }

    void atoms() {
        for (; const line* at = peek(); ++next_) {
            try {
                result_.atoms.push_back(parse_atom(at->meant, result_.kind.oniom));
            } catch (const flib::run_error& error) {
                fail(error.what());
            }
            // Places in the line become places in the body.
            const auto begin = static_cast<std::size_t>(at->meant.data() - text_.data());
            for (coordinate& x : result_.atoms.back().x) {
                x.place += begin - text_from_ + body_from_;
            }
        }
        if (result_.atoms.empty()) {
            if (next_ == lines_.size()) fail_at_end("an atom");
            fail("expected an atom, not a blank line");
        }
        tell_layers();
        included_files();
        tell_outside();
        if (next_ == lines_.size()) {
            if (!text_.ends_with('\n')) result_.body += result_.end_of_line;
            result_.body += result_.end_of_line;
            tell("a blank line added after the last atom");
        }
    }

    /// "@FILE" lines of the sections behind the atoms.
    void included_files() {
        std::size_t added = 0;
        for (std::size_t i = next_; i < lines_.size(); ++i) {
            const std::string_view meant = lines_[i].meant;
            if (!meant.starts_with('@') || !needs_way(trimmed(meant.substr(1)))) continue;
            const std::string_view path = trimmed(meant.substr(1));
            const auto place = static_cast<std::size_t>(path.data() - text_.data());
            result_.body.insert(place - text_from_ + body_from_ + added, way_);
            added += way_.size();
            tell_way("@", path);
        }
    }

    /// Whether a file that is read would no longer be found by the name.
    bool needs_way(std::string_view path) const {
        const bool absolute = path.starts_with('/') || path.starts_with('~') ||
                              path.starts_with('$') || path.find_first_of("\\:") != path.npos;
        return !way_.empty() && !path.empty() && !absolute;
    }

    void tell_way(const std::string& what, std::string_view path) {
        tell(flib::printable(std::string(what).append(path)) + " becomes " +
             flib::printable(std::string(what).append(way_).append(path)) +
             ": the jobs are in another directory");
    }

    void tell_layers() {
        if (!result_.kind.oniom) return;
        std::vector<std::int32_t> high;
        for (std::size_t i = 0; i < result_.atoms.size(); ++i) {
            if (result_.atoms[i].layer == 'H') high.push_back(static_cast<std::int32_t>(i) + 1);
        }
        tell("ONIOM: " + high_layer_in_words(high, result_.atoms.size()));
    }

    /// What is not moved with the atoms, so that the sums over all of them do not vanish.
    void tell_outside() {
        std::vector<std::string> outside = result_.kind.outside;
        if (std::ranges::any_of(result_.atoms, &atom::link)) outside.emplace_back("link atoms");
        if (outside.empty()) return;
        tell(sgn::listed(outside) +
             ": the sum rules do not hold, so sgn_check and sgn_derive are to be run with "
             "--no-sum-rules");
    }

    std::string_view file_;
    std::string_view text_;
    std::string_view way_;  // from the jobs to the input: "" or "../"
    std::vector<line> lines_;
    std::size_t next_ = 0;         // index of the line to be looked at
    std::size_t text_from_ = 0;    // from this place on, the file ...
    std::size_t body_from_ = 0;    // ... is found in the body from this place on
    std::string checkpoint_;       // what %chk says
    bool old_checkpoint_ = false;  // whether there is an %oldchk
    job_template result_;
};

/// From one directory to another: "" or "../", "../../in/". Links are followed, as ".." is by the
/// system.
std::string way_to(const fs::path& to, const fs::path& from) {
    const fs::path way = fs::weakly_canonical(to).lexically_relative(fs::weakly_canonical(from));
    return way == "." ? "" : way.string() + "/";
}

}  // namespace

std::string job_template::reference(std::string_view name) const {
    std::string text = link0;
    for (std::size_t i = own_names.size(); i-- > 0;) text.insert(own_names[i], name);
    text.append("%chk=").append(name).append(".chk").append(end_of_line);
    return text + body;
}

std::string job_template::displaced(std::string_view name, std::size_t atom, std::size_t axis,
                                    decimal step) const {
    const coordinate& x = atoms.at(atom).x.at(axis);
    decimal sum;
    if (!add(x.value, step, sum)) {
        throw flib::run_error("atom " + std::to_string(atom + 1) +
                              ": a coordinate or the step has too many digits");
    }
    std::string text = reference(name);
    std::string number = text_of(sum);
    std::size_t place = text.size() - body.size() + x.place;
    std::size_t length = x.length;
    // The number ends in the column where the old one ended, as far as there are blanks.
    if (number.size() < length) number.insert(0, length - number.size(), ' ');
    while (length < number.size() && text[place - 1] == ' ' && text[place - 2] == ' ') {
        --place;
        ++length;
    }
    return text.replace(place, length, number);
}

job_template parse_input(std::string_view file, std::string_view text, std::string_view way) {
    return input_parser(file, text, way).parse();
}

job_template read_input(const std::string& file, const std::string& directory) {
    constexpr std::int64_t largest = std::int64_t{16} * 1024 * 1024;
    const std::optional<std::string> text = flib::file_contents(file, largest);
    if (!text) {
        throw flib::io_error(file, 0, "is too large for an input file (more than 16 MiB)");
    }
    const std::string way = way_to(fs::absolute(file).parent_path(), fs::absolute(directory));
    return parse_input(file, *text, way);
}

}  // namespace sgn::inputs
