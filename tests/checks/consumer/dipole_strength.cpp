// Reading a table that no reader knows: the dipole strengths of a Gaussian log.
#include <flib/io/free_format.h>
#include <flib/io/unit.h>
#include <flib/search/search_word.h>

#include <cstdint>
#include <cstdio>

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    try {
        const flib::input_unit fid(argv[1]);
        flib::line_buffer line;
        if (!flib::search_word_free(fid, "transition electric dipole moments", line)) return 1;
        flib::skip_records(fid, 1);
        std::int32_t state = 0;
        double strength = 0;
        flib::read_items(fid, state, flib::discard{3}, strength);  // the rest of the row is dropped
        std::printf("state %d: %.4f\n", state, strength);
    } catch (const flib::ending& how) {
        std::printf("%s\n", how.what());
        return how.status();
    }
}
