// What is in a file: the atoms and where the first one is, or why that cannot be told.
#include <flib/facts/file_facts.h>

#include <cstdio>
#include <exception>

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    try {
        const flib::file_facts facts = flib::facts_of(argv[1]);
        if (!facts.geometry) {
            std::printf("no geometry: %s\n",
                        facts.missing.at(flib::quantity::geometry).reason.c_str());
            return 1;
        }
        const double z = facts.geometry->x.front()[2];  // Bohr
        std::printf("%d atoms, the first at z = %.4f\n", *facts.natom, z);
    } catch (const std::exception& error) {  // the file cannot be read at all
        std::printf("%s\n", error.what());
        return 2;
    }
}
