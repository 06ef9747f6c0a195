// The number of atoms in a file, or why it cannot be had.
#include <flib/io/stop_run.h>
#include <flib/qm_file/qm_file_coord.h>
#include <flib/qm_file/qm_file_natom.h>
#include <flib/util/matrix.h>

#include <cstdint>
#include <cstdio>

int main(int argc, char** argv) {
    if (argc != 2) return 3;
    try {
        std::int32_t natom = 0;
        std::int32_t info = 0;
        flib::qm_file_natom(argv[1], natom, info);
        flib::matrix<double> x(3, natom, "the coordinates");
        flib::qm_file_coord(argv[1], natom, x.view(), info);
        std::printf("%d atoms, the first at z = %.4f\n", natom, x(3, 1));
    } catch (const flib::io_error& error) {
        std::printf("caught: %s\n", error.what());
    }
}
