#include "flib/util/elements.h"

#include <gtest/gtest.h>

#include <array>
#include <numeric>
#include <vector>

#include "support/support.h"

namespace flib {
namespace {

TEST(Elements, WholeTable) {
    std::vector<std::int32_t> nat(120);
    std::iota(nat.begin(), nat.end(), -1);
    std::vector<double> mass(120, 7.0);
    nat_to_mass(120, nat, mass);
    EXPECT_EQ(mass[0], 7.0);
    EXPECT_EQ(mass[1], 7.0);
    double sum = 0;
    double weighted_sum = 0;
    std::string symbols;
    for (std::int32_t z = 1; z <= 118; ++z) {
        const std::size_t at = static_cast<std::size_t>(z) + 1;
        sum += mass[at];
        weighted_sum += z * mass[at];
        symbols += element_symbol(z);
        EXPECT_EQ(element_number(element_symbol(z)), z);
        EXPECT_EQ(mass[at] == 0, z == 61 || z >= 102) << z;
    }
    EXPECT_NEAR(sum, 12398.115400914, 1e-9);
    EXPECT_NEAR(weighted_sum, 855609.737519956, 1e-7);
    EXPECT_EQ(symbols,
              "HHeLiBeBCNOFNeNaMgAlSiPSClArKCaScTiVCrMnFeCoNiCuZnGaGeAsSeBrKrRbSrYZrNbMoTcRuRhP"
              "dAgCdInSnSbTeIXeCsBaLaCePrNdPmSmEuGdTbDyHoErTmYbLuHfTaWReOsIrPtAuHgTlPbBiPoAtRnF"
              "rRaAcThPaUNpPuAmCmBkCfEsFmMdNoLrRfDbSgBhHsMtDsRgCnUutFlUupLvUusUuo");
    EXPECT_EQ(mass[7], 12.0);
    EXPECT_EQ(mass[35], 78.96);
}

TEST(Elements, SymbolsInFieldsOfAnyWidth) {
    const std::array<std::int32_t, 5> nat{113, 114, 6, 0, -1};
    std::array<fixed_text<2>, 5> two;
    const auto end = support::ending_of([&] { nat_to_symbol(5, nat, two); });
    EXPECT_EQ(end, (support::ending{0, "Error!\nnat(5) = -1 is out of [1,118]", true}));
    std::string symbols;
    for (const auto& symbol : two) symbols += symbol.padded();
    EXPECT_EQ(symbols, "UuFlC X   ");
    std::array<fixed_text<4>, 1> four;
    nat_to_symbol(1, nat, four);
    EXPECT_EQ(four[0].padded(), "Uut ");
    EXPECT_TRUE(support::ending_of([] { fail_unless_element(1, 119); }));
}

TEST(Elements, NumbersOfSymbols) {
    for (const char* symbol : {" cl", "CL", "Cl "}) EXPECT_EQ(element_number(symbol), 17);
    for (const char* symbol : {"uuO", "Uuox"}) EXPECT_EQ(element_number(symbol), 118);
    std::array<line_buffer, 1> field;
    std::array<std::int32_t, 1> nat{-7};
    for (const char* symbol : {"C1", "CL1", "X", "x", "D", "Bq", "Nh", "Og", "", "chlorine"}) {
        field[0] = symbol;
        symbol_to_nat(1, field, nat);
        EXPECT_EQ(nat[0], -7) << symbol;
    }
}

}  // namespace
}  // namespace flib
