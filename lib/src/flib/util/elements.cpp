#include "flib/util/elements.h"

#include <algorithm>
#include <array>
#include <string>

#include "flib/io/stop_run.h"
#include "flib/text/string.h"

namespace flib {
namespace {

struct element {
    std::string_view symbol;
    double mass;  // u
};

// In order of atomic number. Most masses are those of the most abundant isotope, selenium's is the
// average over them; 0.0 stands for elements without one. 113, 115, 117 and 118 keep their
// systematic names, by which the logs of this workflow know them.
// clang-format off
constexpr std::array<element, last_atomic_number> elements{{
    {"H", 1.007825037},
    {"He", 4.00260325},
    {"Li", 7.0160045},
    {"Be", 9.0121825},
    {"B", 11.0093053},
    {"C", 12.0},
    {"N", 14.003074008},
    {"O", 15.99491464},
    {"F", 18.99840325},
    {"Ne", 19.9924391},
    {"Na", 22.9897697},
    {"Mg", 23.985045},
    {"Al", 26.9815413},
    {"Si", 27.9769284},
    {"P", 30.9737634},
    {"S", 31.9720718},
    {"Cl", 34.968852729},
    {"Ar", 39.9623831},
    {"K", 38.9637079},
    {"Ca", 39.9625907},
    {"Sc", 44.9559136},
    {"Ti", 47.9479467},
    {"V", 50.9439625},
    {"Cr", 51.9405097},
    {"Mn", 54.9380463},
    {"Fe", 55.9349393},
    {"Co", 58.9331978},
    {"Ni", 57.9353471},
    {"Cu", 62.9295992},
    {"Zn", 63.9291454},
    {"Ga", 68.9255809},
    {"Ge", 73.9211788},
    {"As", 74.9215955},
    {"Se", 78.96},
    {"Br", 78.9183361},
    {"Kr", 83.9115064},
    {"Rb", 84.9117},
    {"Sr", 87.9056},
    {"Y", 88.9054},
    {"Zr", 89.9043},
    {"Nb", 92.906},
    {"Mo", 97.9055},
    {"Tc", 98.9063},
    {"Ru", 101.9037},
    {"Rh", 102.9048},
    {"Pd", 105.9032},
    {"Ag", 106.90509},
    {"Cd", 113.9036},
    {"In", 114.9041},
    {"Sn", 117.9018},
    {"Sb", 120.9038},
    {"Te", 129.9067},
    {"I", 126.9004},
    {"Xe", 131.9042},
    {"Cs", 133.9051},
    {"Ba", 137.905},
    {"La", 138.9061},
    {"Ce", 139.9053},
    {"Pr", 140.9074},
    {"Nd", 141.9075},
    {"Pm", 0.0},
    {"Sm", 151.9195},
    {"Eu", 152.9209},
    {"Gd", 157.9241},
    {"Tb", 158.925},
    {"Dy", 163.9288},
    {"Ho", 164.9303},
    {"Er", 165.9304},
    {"Tm", 168.9344},
    {"Yb", 173.939},
    {"Lu", 174.9409},
    {"Hf", 179.9468},
    {"Ta", 180.948},
    {"W", 183.951},
    {"Re", 186.956},
    {"Os", 189.9586},
    {"Ir", 192.9633},
    {"Pt", 194.9648},
    {"Au", 196.9666},
    {"Hg", 201.9706},
    {"Tl", 204.9745},
    {"Pb", 207.9766},
    {"Bi", 208.9804},
    {"Po", 208.9825},
    {"At", 210.9875},
    {"Rn", 222.0175},
    {"Fr", 223.0198},
    {"Ra", 226.0254},
    {"Ac", 227.0278},
    {"Th", 232.0382},
    {"Pa", 231.0359},
    {"U", 238.0508},
    {"Np", 237.048},
    {"Pu", 242.0587},
    {"Am", 243.0614},
    {"Cm", 246.0674},
    {"Bk", 247.0702},
    {"Cf", 249.0748},
    {"Es", 252.0829},
    {"Fm", 252.0827},
    {"Md", 255.0906},
    {"No", 0.0},
    {"Lr", 0.0},
    {"Rf", 0.0},
    {"Db", 0.0},
    {"Sg", 0.0},
    {"Bh", 0.0},
    {"Hs", 0.0},
    {"Mt", 0.0},
    {"Ds", 0.0},
    {"Rg", 0.0},
    {"Cn", 0.0},
    {"Uut", 0.0},
    {"Fl", 0.0},
    {"Uup", 0.0},
    {"Lv", 0.0},
    {"Uus", 0.0},
    {"Uuo", 0.0},
}};
// clang-format on

constexpr std::string_view dummy_symbol = "X";
constexpr std::size_t symbol_length = 3;

const element& element_of(std::int32_t nat) {
    return elements[static_cast<std::size_t>(nat) - 1];
}

}  // namespace

std::string_view element_symbol(std::int32_t nat) {
    return nat == 0 ? dummy_symbol : element_of(nat).symbol;
}

void require_element(std::int32_t i, std::int32_t nat) {
    if (is_atomic_number(nat)) return;
    throw stop_run{exit_status::complete,
                   {"Error!", "nat(" + std::to_string(i) + ") = " + std::to_string(nat) +
                                  " is out of [1," + std::to_string(last_atomic_number) + "]"}};
}

std::int32_t element_number(std::string_view symbol) {
    const fixed_text<symbol_length> wanted{strlowcase(trim(symbol))};
    const auto found = std::find_if(elements.begin(), elements.end(), [&](const element& known) {
        return wanted == strlowcase(known.symbol);
    });
    return found == elements.end() ? 0 : static_cast<std::int32_t>(found - elements.begin()) + 1;
}

void nat_to_mass(std::int32_t n, std::span<const std::int32_t> nat, std::span<double> atmas) {
    for (std::size_t i = 0; i < static_cast<std::size_t>(std::max(n, 0)); ++i) {
        if (nat[i] != 0 && is_atomic_number(nat[i])) atmas[i] = element_of(nat[i]).mass;
    }
}

}  // namespace flib
