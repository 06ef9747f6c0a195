#include "flib/qm_file/qm_file_type.h"

#include <algorithm>
#include <optional>
#include <string>

#include "flib/io/free_format.h"
#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/qm_file/detail/keyword.h"
#include "flib/qm_file/detail/recognise.h"
#include "flib/qm_file/type_tag.h"
#include "flib/search/search_word.h"
#include "flib/text/string.h"

namespace flib {
namespace {

constexpr std::int32_t lines_searched = 1000;
constexpr std::int32_t unrecognised = -1;

/// What a banner is worth once the rest of the evidence has been looked at.
enum class verdict {
    recognised,
    not_recognised,
    only_tag,  // the tag is kept, but further tests are to run
};

/// Looks at the line with the banner, and at those after it, for the version.
using version_rule = verdict (*)(std::int32_t fid, std::string_view line, text_span version);

/// One test: a banner in columns `first` to `last`, or anywhere when they are 0.
struct detection {
    std::int32_t first;
    std::int32_t last;
    std::string_view banner;
    std::string_view tag;
    std::int32_t info;
    version_rule rule;
};

/// Item number `n` of a line, left-adjusted, less its first `dropped` characters.
template <std::int32_t n, std::size_t dropped = 0>
verdict item_version(std::int32_t fid, std::string_view line, text_span version) {
    const line_buffer item = item_of(held_record{fid, line}, n);
    assign_text(version,
                trim_right(item.padded()).substr(std::min(dropped, item.trimmed().size())));
    return verdict::recognised;
}

verdict no_version(std::int32_t, std::string_view, text_span version) {
    assign_text(version, "0");
    return verdict::recognised;
}

verdict version_not_set(std::int32_t, std::string_view, text_span) {
    return verdict::recognised;
}

//  ******************************************
//  Gaussian 16:  ES64L-G16RevA.03 25-Dec-2016
verdict gaussian_log_version(std::int32_t fid, std::string_view, text_span version) {
    line_buffer line;
    if (!search_word_free(fid, "*****************", line)) return verdict::only_tag;
    require_record(fid, line);
    const line_buffer item = item_of(held_record{fid, line.padded()}, 3);
    assign_text(version, after_first('-', item.padded()));
    return verdict::recognised;
}

//  Label Gaussian matrix elements IVers= 2 NLab= 11 Version=ES64L-G16RevA.03
verdict gaussian_mat_version(std::int32_t fid, std::string_view line, text_span version) {
    constexpr std::string_view label = "IVers=";
    constexpr std::size_t usual_place = 5;
    const std::size_t at = line.find(label);
    const std::string_view rest =
        line.substr(at == std::string_view::npos ? usual_place : at + label.size());
    assign_text(version, item_of(held_record{fid, rest}, 1).padded());
    return verdict::recognised;
}

// Number of basis functions                  I               22
verdict gaussian_fchk_version(std::int32_t fid, std::string_view line, text_span version) {
    if (!(item_of(held_record{fid, line}, 5) == "I")) return verdict::not_recognised;
    assign_text(version, "UNKNOWN");
    return verdict::recognised;
}

//     TURBOMOLE V7.2 ( 21285 ) 21 Sep 2017 at 15:34:48
//     TURBOMOLE rev. V7.3.1 (22118) 27 Jul 2018
verdict turbomole_version(std::int32_t fid, std::string_view line, text_span version) {
    const std::string_view rest = line.substr(line.find(tag::turbomole) + tag::turbomole.size());
    std::string item(item_of(held_record{fid, rest}, 1).trimmed());
    item.erase(0, 1);
    // "rev." leaves two blanks and a point; that is what it has always been taken for.
    for (char& c : item) {
        if (c != '.' && !is_ascii_digit(c)) c = ' ';
    }
    assign_text(version, item);
    return verdict::recognised;
}

//  EVC MOLECULAR INFO
//  VERSION 1.0
verdict version_line(std::int32_t fid, std::string_view line, text_span version) {
    line_buffer found{line};
    // Without such a line the last one of the file stands in for it.
    static_cast<void>(search_word(fid, 2, 8, "VERSION", found));
    assign_text(version, item_of(held_record{fid, found.padded()}, 2).padded());
    return verdict::recognised;
}

//          *         GAMESS VERSION = 30 SEP 2017 (R2)          *
verdict gamess_version(std::int32_t, std::string_view line, text_span version) {
    const std::string_view rest = trim_left(after_first('=', line));
    const std::size_t asterisk = rest.find('*');
    assign_text(version, asterisk == std::string_view::npos ? "" : rest.substr(0, asterisk));
    return verdict::recognised;
}

//  Q-Chem 5.1, Q-Chem, Inc., Pleasanton, CA (2018)
verdict qchem_version(std::int32_t fid, std::string_view line, text_span version) {
    line_buffer item = item_of(held_record{fid, line}, 2);
    str_delete(item, ",");
    assign_text(version, item.padded());
    return verdict::recognised;
}

//  Your ORCA version has been built with support for libXC version: 5.1.2
verdict orca_version(std::int32_t, std::string_view line, text_span version) {
    assign_text(version, trim_left(after_first(':', line)));
    return verdict::recognised;
}

// In the order in which the tests are made; the first that succeeds decides.
constexpr detection detections[] = {
    {0, 0, "Entering Gaussian System", tag::gaussian_log, 2, gaussian_log_version},
    {0, 0, "Label Gaussian matrix elements", tag::gaussian_mat, -1, gaussian_mat_version},
    {1, 25, keyword::fchk_basis_functions, tag::gaussian_fchk, -1, gaussian_fchk_version},
    {0, 0, "ChemShell", tag::chemshell, 4, item_version<3>},
    // One column never equals six letters: a Molpro output is left to the tests that follow.
    {67, 67, "MOLPRO", tag::molpro, 3, version_not_set},
    {0, 0, "TURBOMOLE V", tag::turbomole, 1, turbomole_version},
    {0, 0, "TURBOMOLE rev. V", tag::turbomole, 1, turbomole_version},
    {0, 0, "$couplingvector", tag::turbomole_ctrl, 1, no_version},
    {2, 17, "dumping /fiocom/", tag::gaussian_rwf, 1, no_version},
    {2, 19, "EVC MOLECULAR INFO", tag::evc, 3, version_line},
    {2, 20, "NUMERICAL FREQUENCY", tag::numforce, 3, version_line},
    {0, 0, "PWSCF", tag::pwout, 3, item_version<3, 2>},  // Program PWSCF v.6.7MaX starts on ...
    {0, 0, "vasp", tag::vasp, 3, item_version<1, 5>},    // vasp.5.4.4.18Apr17-6-g9f103f2a35
    {0, 0, "NWChem", tag::nwchem, 0, item_version<6>},   // ... Chemistry Package (NWChem) 7.0.2
    {0, 0, "_cell_length_a", tag::cif, 0, no_version},
    {11, 30, "POTENTIAL PARAMETERS", tag::wien2k_1, 0, no_version},
    {3, 12, "bandindex:", tag::wien2k_spe, 0, no_version},
    {0, 0, "GAMESS VERSION", tag::gamess_us, 0, gamess_version},
    {0, 0, "Inc., Pleasanton", tag::qchem, 0, qchem_version},
    {0, 0, "$orca_hessian_file", tag::orca_hessian, 0, no_version},
    {0, 0, "ORCA version", tag::orca, 0, orca_version},
    {0, 0, "TeraChem v", tag::terachem, 0, item_version<3>},  // TeraChem v1.94V-2019.08-dev
    // Gaussian for Windows begins its logs here.
    {0, 0, "Entering Link 1 = ", tag::gaussian_log, 2, gaussian_log_version},
};

bool find_banner(const detection& test, std::int32_t fid, text_span line) {
    if (test.first == 0) {
        return search_word_free_tline(fid, test.banner, lines_searched, true, line);
    }
    return search_word_tline(fid, test.first, test.last, test.banner, lines_searched, true, line);
}

}  // namespace

void recognise(std::int32_t fid, text_span file_type, text_span version, std::int32_t& info) {
    info = unrecognised;
    line_buffer line;
    require_record(fid, line);
    for (const detection& test : detections) {
        rewind_unit(fid);
        if (!find_banner(test, fid, line)) continue;
        const verdict worth = test.rule(fid, line.padded(), version);
        if (worth != verdict::not_recognised) assign_text(file_type, test.tag);
        if (worth == verdict::recognised) {
            info = test.info;
            return;
        }
    }
}

void qm_file_type(std::string_view fname, text_span file_type, text_span version,
                  std::int32_t& info) {
    info = unrecognised;
    std::optional<input_unit> fid;
    try {
        fid.emplace(fname);
    } catch (const io_error&) {
        return;
    }
    recognise(*fid, file_type, version, info);
}

line_buffer type_tag_of(std::string_view fname) {
    line_buffer file_type;
    line_buffer version;
    std::int32_t info = 0;
    qm_file_type(fname, file_type, version, info);
    return file_type;
}

}  // namespace flib
