#include "support/job.h"

#include <cmath>
#include <cstdio>
#include <limits>

#include "support/support.h"

namespace support {
namespace {

/// As printf would print it. The texts of tests/data name their values by number: "%2$6d".
template <class... Values>
std::string printed(const std::string& format, Values... values) {
    const int length = std::snprintf(nullptr, 0, format.c_str(), values...);
    std::string text(static_cast<std::size_t>(length), ' ');
    std::snprintf(text.data(), text.size() + 1, format.c_str(), values...);
    return text;
}

std::string rows_of(const std::vector<double>& numbers, const char* format, int per_line) {
    std::string text;
    int printed = 0;
    for (const double number : numbers) {
        char field[40];
        std::snprintf(field, sizeof field, format, number);
        text += field;
        if (++printed % per_line == 0) text += '\n';
    }
    if (printed % per_line != 0) text += '\n';
    return text;
}

/// Eight digits behind the point, as a dump has them: "-0.36421047D-07", "0.49406565-323".
std::string fortran_real(double value, char exponent_letter) {
    const std::string text = printed("%.7E", value);  // "-3.6421047E-08"
    const std::size_t point = text.find('.');
    const std::size_t letter = text.find('E');
    const int exponent = value == 0 ? 0 : std::stoi(text.substr(letter + 1)) + 1;
    const std::string digits = text[point - 1] + text.substr(point + 1, letter - point - 1);
    const std::string mantissa = text.substr(0, point - 1) + "0." + digits;
    if (std::abs(exponent) > 99) return mantissa + printed("%+04d", exponent);
    return mantissa + exponent_letter + printed("%+03d", exponent);
}

/// Random numbers that `digits` decimals hold exactly.
double rounded(std::mt19937_64& random, double digits) {
    std::uniform_real_distribution<double> range(-1, 1);
    return std::round(range(random) * std::pow(10, digits)) / std::pow(10, digits);
}

}  // namespace

job random_job(std::mt19937_64& random, std::int32_t natom, std::int32_t nfc, std::int32_t mi,
               std::int32_t ma, std::int32_t nfv, std::int32_t mci) {
    job made{nfc, mi, ma, nfv, mci};
    const auto fill = [&](auto& numbers, double digits) {
        for (double& number : numbers) number = rounded(random, digits);
    };
    for (std::int32_t i = 0; i < natom; ++i) {
        made.nat.push_back(1);
        fill(made.x.emplace_back(), 6);
        fill(made.force.emplace_back(), 9);
    }
    fill(made.tdip, 4);
    made.moc.resize(static_cast<std::size_t>(made.nbasis() * made.nbasis()));
    fill(made.moc, 8);
    made.xpy.resize(static_cast<std::size_t>(ma * mi * 2 * mci));
    fill(made.xpy, 8);
    return made;
}

std::string log_text(const job& what, const writing& how) {
    const auto& [nfc, mi, ma, nfv, mci, nat, x, force, tdip, moc, xpy] = what;
    std::string coordinates;
    std::string forces;
    for (std::size_t i = 0; i < nat.size(); ++i) {
        coordinates += printed("%7zu%11d           0    %12.6f%12.6f%12.6f\n", i + 1, nat[i],
                               x[i][0], x[i][1], x[i][2]);
        forces += printed("%7zu%9d     %15.9f%15.9f%15.9f\n", i + 1, nat[i], force[i][0],
                          force[i][1], force[i][2]);
    }
    const std::string log = printed(
        contents_of(data_file("made_up_log.txt")), nat.size(), what.nbasis(), nfc, mi, ma, nfv, mci,
        nfc + mi, mi + ma, mi * ma, tdip[0], tdip[1], tdip[2], coordinates.c_str(), forces.c_str());
    return replaced(log, "\n", how.end_of_line);
}

std::string checkpoint_text(const job& what, const writing& how) {
    const std::string moc = rows_of(what.moc, "%16.8E", how.per_line);
    const std::string checkpoint =
        printed(contents_of(data_file("made_up_checkpoint.txt")), what.nat.size(),
                what.nfc + what.mi, what.nbasis(), what.moc.size(), moc.c_str());
    return replaced(checkpoint, "\n", how.end_of_line);
}

std::string dump_text(const job& what, const writing& how) {
    std::vector<double> values(static_cast<std::size_t>(what.mci), 0.25);
    if (how.layout_told) {
        // Integers are multiples of the smallest real. The states are a quarter of the roots.
        constexpr double one = std::numeric_limits<double>::denorm_min();
        const int n = what.ma * what.mi;
        const std::vector<double> energies = values;
        values.clear();
        for (const int word : {(what.mci + 3) / 4, 2 * n, 0, n, 0, n, what.mci, 0, 0, 0, 0, 0}) {
            values.push_back(word * one);
        }
        values.insert(values.end(), what.xpy.begin(), what.xpy.end());
        values.insert(values.end(), what.xpy.begin(), what.xpy.end());
        values.insert(values.end(), energies.begin(), energies.end());
    } else {
        values.insert(values.end(), what.xpy.begin(), what.xpy.end());
    }
    std::string text = printed(
        " dumping /fiocom/, unit = 1 NFiles =     1 SizExt =    524288 WInBlk =       512\n"
        " Dump of file   635 length%14zu (read left to right):\n",
        values.size());
    int in_line = 0;
    for (const double value : values) {
        if (in_line == 0) text += ' ';
        text += printed("%20s", fortran_real(value, how.dump_exponent).c_str());
        if (++in_line == how.per_line) {
            text += '\n';
            in_line = 0;
        }
    }
    if (in_line != 0) text += '\n';
    return replaced(text, "\n", how.end_of_line);
}

void write_job(const std::filesystem::path& directory, std::string_view name, const job& what,
               const writing& how) {
    const std::filesystem::path job = directory / name;
    write_file(job.string() + ".log", log_text(what, how));
    write_file(job.string() + ".fchk", checkpoint_text(what, how));
    write_file(job.string() + ".cis", dump_text(what, how));
}

}  // namespace support
