// What the library says of a file of a program that was just added, by facts_of() and by each
// reader.
#include <flib/facts/file_facts.h>
#include <flib/qm_file/qm_file_coord.h>
#include <flib/qm_file/qm_file_mass.h>
#include <flib/qm_file/qm_file_nat.h>
#include <flib/qm_file/qm_file_natom.h>
#include <flib/qm_file/qm_file_type.h>
#include <flib/text/fixed_text.h>

#include <cstdio>

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const flib::file_facts facts = flib::facts_of(argv[1]);
    for (const auto& [which, why] : facts.missing) {
        std::printf("no %s: %s\n", std::string(flib::name_of(which)).c_str(), why.reason.c_str());
    }
    if (!facts.kind || !facts.natom || !facts.numbers || !facts.geometry || !facts.masses) return 1;
    const auto& [tag, words, version, code] = *facts.kind;
    std::printf("%s is %s, version %s\n", tag.c_str(), words.c_str(), version.c_str());
    std::printf("%d atoms, %s of %d tables\n", *facts.natom,
                facts.geometry->last ? "last" : "first", facts.geometry->tables);
    std::int32_t natom = 0, info = 0;
    flib::qm_file_natom(argv[1], natom, info);
    std::vector<std::int32_t> nat(static_cast<std::size_t>(natom));
    std::vector<double> x(3 * nat.size()), mass(nat.size());
    flib::qm_file_nat(argv[1], natom, nat, info);
    flib::qm_file_coord(argv[1], natom, {x.data(), 3, natom}, info);
    flib::qm_file_mass(argv[1], natom, mass, info);
    for (std::size_t i = 0; i < nat.size(); ++i) {
        const double z = facts.geometry->x[i][2];
        std::printf(
            "%d %.6f %.6f%s\n", nat[i], x[3 * i + 2], mass[i],
            nat[i] == (*facts.numbers)[i] && x[3 * i + 2] == z && mass[i] == (*facts.masses)[i]
                ? ""
                : " differ");
    }
}
