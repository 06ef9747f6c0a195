// Gaussian logs and the ONIOM layers, and the rules of single programs that the common questions
// do not reach.
#include "flib/qm_file/qm_file_oniom.h"

#include <gmock/gmock.h>

#include "qm_file/ask.h"

namespace {

using namespace flib;
using support::ending;
using testing::ElementsAre;
using testing::HasSubstr;
using integers = std::vector<std::int32_t>;

const std::string banner = " Entering Gaussian System\n *****************\n Gaussian 16:  A-B\n";

std::string fixture(const char* name) {
    return support::contents_of(support::data_file(name));
}

TEST(GaussianLog, GivesForcesAndDipolesOfTheLastStepAsPrinted) {
    std::vector<double> force(9, untouched);
    std::vector<double> tdip(9, untouched);
    std::int32_t info = 0;
    qm_file_force_tdip(support::data_file("gaussian/water_cis.log"), 3, 2, {force.data(), 3, 3},
                       {tdip.data(), 3, 3}, info);
    EXPECT_EQ(info, -1);
    EXPECT_THAT(force, ElementsAre(0, 0, 0.012345678, 0.001, 0.020000001, -0.006172839, -0.001,
                                   -0.020000001, -0.006172839));
    EXPECT_THAT(tdip,
                ElementsAre(-0.5354, 0.001, -0.002, 0, 0, 0.7, untouched, untouched, untouched));
}

TEST(GaussianLog, HasMassesInBlocksOfTen) {
    const support::scratch_directory scratch;
    std::string text = banner;
    for (int i = 1; i <= 23; ++i) {
        text += (i % 10 == 1 ? "\n AtmWgt= " : " ") + std::to_string(i) + ".5";
    }
    const answer a = ask(reader::mass, scratch.file("log", text + "\n"), 23);
    ASSERT_EQ(a.end, std::nullopt);
    for (std::size_t i = 0; i < 23; ++i) EXPECT_EQ(a.values[i], static_cast<double>(i) + 1.5);
}

TEST(GaussianLog, HasSymbolsBelowTheChargesOrMassesOfTheElements) {
    EXPECT_THAT(ask(reader::nat, support::data_file("gaussian/water_no_table.log")).values,
                ElementsAre(8, 1, 1));
    const support::scratch_directory scratch;
    const std::string file = scratch.file(
        "log", replaced(fixture("gaussian/water_freq.log"), "Thermochemistry", "Chemistry"));
    EXPECT_THAT(ask(reader::mass, file).values, ElementsAre(15.99491464, 1.007825037, 1.007825037));
}

TEST(SinglePrograms, ChooseUnitAndTable) {
    struct variant {
        const char* file;
        const char* from;
        const char* to;
        double z;  // of oxygen, Bohr
    };
    const variant variants[] = {
        {"numforce/water.out", "Coordinate  Bohr", "Coordinate b", 0.22298767},
        {"numforce/water.out", "Coordinate  Bohr", "Coordinate", 0.22298767 / 0.529177249},
        {"numforce/water.out", "Coordinate  Bohr", "Coordinate in B", 0.22298767 / 0.529177249},
        {"numforce/water.out", "  Bohr", " Angstrom", 0.22298767 / 0.529177249},
        {"vasp/OUTCAR", "0.11800", "0.529177249", 1.0},
        {"gamess_us/water.out", "          ATOMIC W",
         " COORDINATES OF ALL ATOMS ARE (ANGS)\n 1 8 0 0 0.529177249\n 2 1 0 0 0\n 3 1 0 0 0\n", 1},
        {"terachem/water.out", "      0.2229876667", "\n -7.5 next", -7.5},
    };
    const support::scratch_directory scratch;
    for (const variant& v : variants) {
        const answer a =
            ask(reader::coord, scratch.file("file", replaced(fixture(v.file), v.from, v.to)));
        ASSERT_EQ(a.end, std::nullopt) << v.file;
        EXPECT_EQ(a.values[2], v.z) << v.file << " with " << v.to;
    }
}

// The layers.

struct layers {
    std::int32_t nqm = untouched;
    std::int32_t nqmmm = untouched;
    integers idx;
    std::optional<ending> end;  // of the reading of the index
};

layers layers_of(const std::string& file, std::size_t room) {
    layers found;
    std::int32_t info = 0;
    qm_file_natom_oniom_qm(file, found.nqm, found.nqmmm, info);
    EXPECT_EQ(info, -1);
    found.idx.assign(room, untouched);
    found.end = support::ending_of([&] {
        qm_file_oniom_index(file, static_cast<std::int32_t>(room), found.nqmmm, found.idx, info);
    });
    return found;
}

TEST(Oniom, LayersStandWhereTheFirstAtomLineSays) {
    const std::string charge = " Charge =  0 Multiplicity = 1 for low level\n Charge =  0 again\n";
    const struct {
        std::string lines;
        integers idx;
    } lists[] = {
        {charge + " O 0 0. 0. 0.1 L\n H 0 0. 1. 0. H\n F 0 1. 1. 0. H\n", {2, 3}},
        {charge + " O 0. 0. 0.1 H\n H 0. 1. 0. L\n F 1. 1. 0. H\n", {1, 3}},
        {charge + "O,0 0. 0. L 0.1\nH,0 0. 1. H 0.\nF,0 1. 1. H 0.\n", {2, 3}},
        {charge + " O 0 0. 0. 0.1 L H 2 H\n H 0 0. 1. 0. H\n F 0 1. 1. 0. h\n", {2}},
        {charge + " in the old form\n 1 0 0.\n 2 1 0.\n 3, 0 1.\n", {1, 3}},
        {charge + "\n O 0 0. 0. 0.1 L\n H 0 0. 1. 0. H\n F 0 1. 1. 0. L\n", {2}},
        {" no such line\n", {}},
    };
    const support::scratch_directory scratch;
    for (const auto& list : lists) {
        const layers found =
            layers_of(scratch.file("log", banner + list.lines + "\n NAtoms= 3 of 3\n"), 3);
        EXPECT_EQ(found.end, std::nullopt);
        EXPECT_EQ(found.nqmmm, 3);
        EXPECT_EQ(found.nqm, static_cast<std::int32_t>(list.idx.size())) << list.lines;
        integers expected = list.idx;
        expected.resize(3, untouched);
        EXPECT_EQ(found.idx, expected) << list.lines;
    }
}

TEST(Oniom, ReadsTheHighLayerOfALog) {
    const std::string file = support::data_file("gaussian/oniom.log");
    const layers found = layers_of(file, 3);
    EXPECT_EQ(found.nqmmm, 5);
    EXPECT_THAT(found.idx, ElementsAre(2, 3, 4));
    EXPECT_THAT(
        ask(reader::force_tdip, file).values,
        ElementsAre(0.002, 0.004, 0.006, 0.003, 0.006, 0.009, 0.004, 0.008, 0.012, 0.4, 0.5, 0.6));
    EXPECT_EQ(ask(reader::coord, file, 5).values[2], -3.9 / 0.529177249);
    EXPECT_EQ(ask(reader::force_tdip, file, 5).end, (ending{1, " natom != nqm, stop!", true}));
    EXPECT_THAT(layers_of(file, 2).end->text, HasSubstr("room was made for 2 only"));

    const support::scratch_directory scratch;
    const std::string flagged =
        scratch.file("log", replaced(fixture("gaussian/oniom.log"), "3.900000 L", "3.900000 -1"));
    EXPECT_EQ(layers_of(flagged, 3).end,
              (ending{1,
                      "  Can not find H or L layer (oniom) information in log file\n"
                      "  Method has not been implemented\n  Stop",
                      true}));
    const layers other = layers_of(support::data_file("gaussian/water.fchk"), 1);
    EXPECT_EQ(other.nqm, 0);
    EXPECT_EQ(other.nqmmm, untouched);
}

TEST(Oniom, ReadsTheHighLayerOfAnInputFile) {
    const support::scratch_directory scratch;
    const std::string text = fixture("gaussian/oniom.gjf");
    const layers found = layers_of(support::data_file("gaussian/oniom.gjf"), 4);
    EXPECT_EQ(found.nqmmm, 5);
    EXPECT_THAT(found.idx, ElementsAre(2, 3, 4, untouched));
    // Programs that draw molecules write a blank before each symbol.
    EXPECT_THAT(layers_of(scratch.file("gjf", replaced(text, "\nAr ", "\n Ar ")), 3).idx,
                ElementsAre(2, 3, 4));
    EXPECT_EQ(layers_of(scratch.file("gjf", replaced(text, "oniom", "onion")), 3).idx,
              integers(3, untouched));
    // Every line is read at the place of the first line's last word, which the others may lack.
    EXPECT_EQ(layers_of(scratch.file("gjf", replaced(text, "O    0", "O")), 3).end->status, 2);
    EXPECT_THAT(layers_of(scratch.file("gjf", replaced(text, "O    0", "O 0 0")), 3).idx,
                ElementsAre(2, 4, untouched));
}

TEST(Oniom, IsNamedInTheFirstLinesInAnyCase) {
    const support::scratch_directory scratch;
    for (const int line : {1, 101, 102}) {
        for (const char* word : {"oniom", "ONIOM", "x#p=OnIoM("}) {
            bool ifoniom = line > 101;
            std::int32_t info = 0;
            const std::string lines(static_cast<std::size_t>(line - 1), '\n');
            qm_file_ifoniom(scratch.file("any", lines + word + "\n"), ifoniom, info);
            EXPECT_EQ(ifoniom, line <= 101) << line << word;
            EXPECT_EQ(info, -1);
        }
    }
    bool ifoniom = true;
    std::int32_t info = 0;
    qm_file_ifoniom(support::data_file("gaussian/water_cis.log"), ifoniom, info);
    EXPECT_FALSE(ifoniom);
    EXPECT_EQ(info, 2);
}

}  // namespace
