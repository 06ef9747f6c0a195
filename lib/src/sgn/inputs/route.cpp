#include "sgn/inputs/route.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>
#include <utility>

#include "flib/io/number.h"
#include "flib/io/stop_run.h"
#include "flib/text/string.h"

namespace sgn::inputs {
namespace {

/// Blanks, commas and slashes part keywords, the colon parts the methods of an ONIOM job.
constexpr std::string_view separators = " \t\r,/:";
constexpr std::string_view white_space = " \t\r";

class route_parser {
  public:
    explicit route_parser(std::string_view text) : rest_(text) {}

    std::vector<keyword> all() {
        std::vector<keyword> found = keywords(0);
        if (!rest_.empty()) fail();
        return found;
    }

  private:
    [[noreturn]] static void fail() {
        throw flib::run_error("the parentheses of the route do not match");
    }

    void skip(std::string_view characters) {
        rest_.remove_prefix(std::min(rest_.find_first_not_of(characters), rest_.size()));
    }

    bool take(char c) {
        if (!rest_.starts_with(c)) return false;
        rest_.remove_prefix(1);
        return true;
    }

    /// Keywords up to a closing parenthesis or the end.
    std::vector<keyword> keywords(int depth) {
        std::vector<keyword> found;
        for (skip(separators); !rest_.empty() && rest_.front() != ')'; skip(separators)) {
            found.push_back(next(depth));
        }
        return found;
    }

    keyword next(int depth) {
        constexpr int deepest = 20;
        if (depth > deepest) fail();
        keyword result;
        const std::size_t length = std::min(rest_.find_first_of(" \t\r,/:=()"), rest_.size());
        result.name = flib::strlowcase(rest_.substr(0, length));
        rest_.remove_prefix(length);
        for (;;) {
            skip(white_space);
            const bool equals = take('=');
            if (equals) skip(white_space);
            if (take('(')) {
                std::ranges::move(keywords(depth + 1), std::back_inserter(result.options));
                if (!take(')')) fail();
            } else if (!equals) {
                return result;
            } else if (rest_.empty() || rest_.front() == ')' ||
                       separators.find(rest_.front()) != separators.npos) {
                // What is added behind it would become its option.
                throw flib::run_error("nothing follows the '=' of '" +
                                      flib::printable(result.name).append("' in the route"));
            } else {
                result.options.push_back(next(depth + 1));
                return result;
            }
        }
    }

    std::string_view rest_;
};

bool starts_with_any(std::string_view name, std::span<const std::string_view> words) {
    return std::ranges::any_of(words,
                               [&](std::string_view word) { return name.starts_with(word); });
}

/// Calls `visit` with all of the keywords and their options, at any depth.
template <class Visit>
void for_all(const std::vector<keyword>& keywords, const Visit& visit) {
    for (const keyword& each : keywords) {
        visit(each);
        for_all(each.options, visit);
    }
}

struct refusal {
    std::string_view start;  // of the keyword, which may be shortened or have endings
    std::string_view reason;
};

constexpr std::array<refusal, 14> refused_jobs{{
    {"opt", "moves the geometry; take its result and leave the keyword out"},
    {"popt", "moves the geometry; take its result and leave the keyword out"},
    {"fopt", "moves the geometry; take its result and leave the keyword out"},
    {"freq", "displaces the geometry itself; leave it out"},
    {"irc", "follows a path"},
    {"scan", "goes through many geometries"},
    {"admp", "is a trajectory"},
    {"bomd", "is a trajectory"},
    {"polar", "is a job of another type; leave it out"},
    {"stable", "is a job of another type; leave it out"},
    {"volume", "is a job of another type; leave it out"},
    {"counter", "makes several calculations of one geometry"},
    {"restart", "goes on with an earlier job"},
    {"nonstd", "is a route by overlays, which says nothing of the job"},
}};

/// Options of "geom" that only print, or say which atoms are bonded.
constexpr std::string_view harmless_geometry[] = {
    "connect", "genconnect", "modconnect", "print",   "dist",  "nodist",  "angle", "noangle",
    "cangle",  "nocangle",   "dihed",      "nodihed", "crowd", "nocrowd", "notest"};

/// Units in which lengths stay Angstrom.
constexpr std::string_view angstrom_and_angles[] = {"ang", "deg", "rad"};

/// What an option says of the job, of those that say something.
enum class option_effect { reads_checkpoint, goes_on };
struct known_option {
    std::string_view keyword;  // as it begins
    std::string_view option;   // likewise
    option_effect effect;
};

/// With "read", other keywords (scrf, pseudo, field) take a section of the input.
constexpr known_option known_options[] = {
    {"guess", "read", option_effect::reads_checkpoint},
    {"guess", "check", option_effect::reads_checkpoint},
    {"guess", "tcheck", option_effect::reads_checkpoint},
    {"dens", "check", option_effect::reads_checkpoint},
    {"charge", "check", option_effect::reads_checkpoint},
    {"field", "chkread", option_effect::reads_checkpoint},
    {"td", "read", option_effect::reads_checkpoint},
    {"cis", "read", option_effect::reads_checkpoint},
    {"rcis", "read", option_effect::reads_checkpoint},
    {"", "restart", option_effect::goes_on},
};

/// Methods as they begin. After a "u" or "ro" they are not of a closed shell.
constexpr std::string_view methods[] = {
    "hf",    "cis",   "b3",   "b1",    "b9",     "b2",      "bmk",    "bh",   "cam-",  "lc-",
    "pbe",   "wb97",  "m05",  "m06",   "m08",    "m11",     "mn1",    "tpss", "hse",   "ohse",
    "hcth",  "thcth", "apf",  "x3lyp", "o3l",    "lsda",    "n12",    "mpw",  "sogga", "hiss",
    "am1",   "pm3",   "pm6",  "pm7",   "pddg",   "mndo",    "mindo",  "dftb", "indo",  "cndo",
    "zindo", "xa",    "vsxc", "vp86",  "pw6b95", "revtpss", "pkzb",   "wpbe", "dsd",   "mp2",
    "mp3",   "mp4",   "ccsd", "qcis",  "cas",    "rhf",     "rb3lyp", "lda"};

/// Functionals are also put together of an exchange and a correlation.
constexpr std::string_view exchanges[] = {"s", "b", "pw91", "g96", "o", "brx", "pbeh"};
constexpr std::string_view correlations[] = {"vwn",  "lyp",  "pl",    "p86",    "pw91",
                                             "b95",  "pbe",  "tpss",  "kcis",   "brc",
                                             "pkzb", "vp86", "v5lyp", "revtpss"};

/// Basis sets as they begin, without the name of a method.
constexpr std::string_view basis_sets[] = {
    "sto-",  "3-21",    "4-31", "6-21",   "6-31",  "cc-", "aug-",    "daug-",     "spaug-", "jul-",
    "jun-",  "may-",    "apr-", "maug-",  "def2",  "sv",  "tzv",     "qzv",       "dz",     "d95",
    "lanl2", "lp-31",   "sdd",  "oldsdd", "sdfmb", "shc", "cep-",    "stuttgart", "epr-",   "ugbs",
    "midi",  "mtsmall", "dgdz", "dgtz",   "cbsb",  "gen", "minimal", "mwb",       "ecp",    "mdf"};

/// Other keywords that a job may have, as they begin: none of them takes the geometry from
/// elsewhere or does more than one.
constexpr std::string_view harmless[] = {
    "force",  "nosym",   "symm",      "scf",    "int",      "iop",     "guess",  "chkbas",
    "dens",   "charge",  "field",     "geom",   "unit",     "scrf",    "pop",    "prop",
    "output", "form",    "gfin",      "gfpr",   "gfold",    "extra",   "pseudo", "denf",
    "nodenf", "fit",     "auto",      "w06",    "emp",      "fmm",     "cphf",   "test",
    "maxd",   "temp",    "press",     "scale",  "name",     "trackio", "punch",  "window",
    "fc",     "full",    "frozen",    "rw",     "read",     "archive", "noarch", "grid",
    "sparse", "massage", "constants", "tran",   "external", "5d",      "6d",     "7f",
    "10f",    "cart",    "pure",      "conver", "prism",    "rotate",  "uff",    "dreiding",
    "amber",  "nofmm",   "nobigel",   "sym",    "stdmo",    "oniom",   "td",     "cis",
    "rcis",   "tda",     "counter"};

constexpr std::string_view oniom_options[] = {
    "embed", "input", "only", "svalue", "scalecharge", "compress", "nocompress", "blank", "mk"};

bool begins_combination(std::string_view name) {
    return std::ranges::any_of(exchanges, [&](std::string_view exchange) {
        return name.starts_with(exchange) &&
               starts_with_any(name.substr(exchange.size()), correlations);
    });
}

bool is_method(std::string_view name) {
    return starts_with_any(name, methods) || begins_combination(name);
}

bool is_open_shell(std::string_view name) {
    return (name.starts_with("ro") && is_method(name.substr(2))) ||
           (name.starts_with('u') && is_method(name.substr(1)));
}

bool is_known(std::string_view name) {
    return is_method(name) || starts_with_any(name, basis_sets) || starts_with_any(name, harmless);
}

bool is_excited_state(std::string_view name) {
    return name == "cis" || name == "td" || name == "tda" || name == "rcis";
}

[[noreturn]] void refuse(const keyword& which, std::string_view reason) {
    throw flib::run_error(std::string(1, '\'')
                              .append(flib::printable(which.name))
                              .append("' in the route ")
                              .append(reason));
}

std::int32_t root_of(const keyword& option) {
    std::int32_t root = 0;
    if (option.options.size() == 1 &&
        flib::parse_integer(option.options.front().name, root) == flib::number_error::none &&
        root > 0) {
        return root;
    }
    refuse(option, "needs a number, 1 or above");
}

void judge_excited_state(const keyword& job, job_kind& kind) {
    for (const keyword& option : job.options) {
        if (option.name == "d") refuse(job, "with the option d gives no forces");
        if (option.name.starts_with("trip")) {
            refuse(option, "asks for triplets, whose transition dipole is zero");
        }
        if (option.name == "50-50") {
            refuse(option,
                   "asks for singlets and triplets: the first state may be a triplet, whose "
                   "transition dipole is zero");
        }
        if (option.name == "root") kind.root = root_of(option);
    }
}

void judge_option(const keyword& of, const keyword& option, job_kind& kind) {
    for (const auto& [word, start, effect] : known_options) {
        if (!of.name.starts_with(word) || !option.name.starts_with(start)) continue;
        if (effect == option_effect::goes_on) refuse(option, "goes on with an earlier job");
        kind.reads_checkpoint = true;
    }
}

/// Of an ONIOM job the methods are options.
void find_unknown(const std::vector<keyword>& keywords, job_kind& kind) {
    for (const keyword& each : keywords) {
        if (each.name == "oniom") {
            for (const keyword& option : each.options) {
                const bool of_oniom = starts_with_any(option.name, oniom_options);
                if (!of_oniom && !is_known(option.name)) kind.unknown.push_back(option.name);
            }
        } else if (!is_known(each.name)) {
            kind.unknown.push_back(each.name);
        }
    }
}

/// Keywords that count only where they are not options.
void judge_job(const keyword& each, job_kind& kind) {
    for (const auto& [start, reason] : refused_jobs) {
        if (each.name.starts_with(start)) refuse(each, reason);
    }
    if (each.name == "sp") refuse(each, "asks for no forces; leave it out");
    if (each.name.starts_with("forc")) kind.force = true;
    if (each.name == "oniom") {
        kind.oniom = true;
        const auto embeds = [](const keyword& option) { return option.name.starts_with("embed"); };
        if (std::ranges::any_of(each.options, embeds)) {
            kind.outside.emplace_back("electronic embedding");
        }
    }
    if (each.name.starts_with("charge")) kind.outside.emplace_back("point charges");
    if (each.name == "field") kind.outside.emplace_back("an outer field");
    if (each.name.starts_with("nosym")) kind.nosymm = true;
    if (each.name.starts_with("symm")) {
        if (each.options.size() != 1 || each.options.front().name != "none") {
            refuse(each, "contradicts nosymm, without which the frame turns; leave it out");
        }
        kind.nosymm = true;
    }
    if (each.name.starts_with("geom")) {
        for (const keyword& option : each.options) {
            if (!starts_with_any(option.name, harmless_geometry)) {
                refuse(option,
                       "takes the geometry from elsewhere or changes it; the atoms must "
                       "stand in the input");
            }
        }
    }
    if (each.name.starts_with("unit")) {
        for (const keyword& option : each.options) {
            if (option.name == "au" || option.name == "bohr") {
                kind.unit = length_unit::bohr;
            } else if (!starts_with_any(option.name, angstrom_and_angles)) {
                refuse(option, "is no unit known here");
            }
        }
    }
}

}  // namespace

std::vector<keyword> parse_route(std::string_view text) {
    return route_parser(text).all();
}

job_kind judge_route(const std::vector<keyword>& route) {
    for_all(route, [](const keyword& each) {
        if (each.name.starts_with("frac")) {
            refuse(each, "means fractional coordinates; give Cartesian coordinates");
        }
    });
    job_kind kind;
    for (const keyword& each : route) judge_job(each, kind);
    bool excited = false;
    for_all(route, [&](const keyword& each) {
        if (is_open_shell(each.name)) {
            refuse(each, "is not of a closed shell, whose amplitudes are those that can be used");
        }
        if (is_excited_state(each.name)) {
            excited = true;
            judge_excited_state(each, kind);
        }
        if (each.name.starts_with("chkbas")) kind.reads_checkpoint = true;
        for (const keyword& option : each.options) judge_option(each, option, kind);
    });
    if (!excited) {
        throw flib::run_error(
            "the route asks for no excited state whose amplitudes can be used: cis, td or tda");
    }
    find_unknown(route, kind);
    return kind;
}

}  // namespace sgn::inputs
