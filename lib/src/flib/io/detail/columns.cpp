#include "flib/io/detail/columns.h"

#include <array>
#include <atomic>
#include <bit>
#include <cstdint>
#include <cstring>

#include "flib/io/detail/powers_of_ten.h"

#ifdef __x86_64__
#include <immintrin.h>
#endif

namespace flib {
namespace {

std::atomic<bool> is_allowed = true;

#ifdef __x86_64__

// Four lines, twenty numbers, are taken or left as a whole. A number's last sixteen characters, a
// vector's half, are in all shapes digits, perhaps a sign and a point among them, then the
// exponent:
//
//          -9.95564210E-01    checkpoint, all of it
//         | -0.15494406D-05    dump as rwfdump prints it
//       -0.|136409605669D-15    dump with twelve decimals
//
// The columns before the bar are its head: blanks, or what a longer number begins with.
// Each character is compared with the two that may stand there, or must be a digit. Digits times
// powers of ten are added to their neighbours until they are an integer m below 2^52, the
// exponent's sign and digits the index of 10^e in a table, as high + low. Then m x high is p +
// error without rounding, and p + (error + m x low) misses the number by less than 2^-103 p: if
// 2^-100 p more and less give the same double, it is the number correctly rounded.

constexpr int numbers_of_line = 5;
constexpr int numbers_at_once = 20;
constexpr int tail_length = 16;

/// What a line holds.
struct line_shape {
    int margin;    // blanks before the first number
    int width;     // columns of a number
    int decimals;  // 8, or 12, which begin behind a head that is part of the number

    constexpr int length() const { return margin + numbers_of_line * width; }
    constexpr int head() const { return width - tail_length; }
};

constexpr line_shape checkpoint_line = {.margin = 0, .width = 16, .decimals = 8};
constexpr line_shape dump_line = {.margin = 1, .width = 20, .decimals = 8};
constexpr line_shape line_of_20 = {.margin = 0, .width = 20, .decimals = 12};
constexpr line_shape line_of_22 = {.margin = 0, .width = 22, .decimals = 12};

// Powers of ten.

struct power_of_ten {
    double high;
    double low;
};

constexpr double two_to(int exponent) {
    return std::bit_cast<double>(static_cast<std::uint64_t>(exponent + 1023) << 52);
}

/// The 106 leading bits of `value` x 2^`exponent`, of which the highest is set.
constexpr power_of_ten in_two(uint128 value, int exponent) {
    constexpr std::uint64_t bits_53 = (std::uint64_t{1} << 53) - 1;
    const auto high = static_cast<std::uint64_t>(value >> 75);
    const std::uint64_t low = static_cast<std::uint64_t>(value >> 22) & bits_53;
    return {static_cast<double>(high) * two_to(exponent + 75),
            static_cast<double>(low) * two_to(exponent + 22)};
}

/// 10^(e - `decimals`) for the exponents e = 0 to 99, then for 0 to -99.
template <int decimals>
constexpr auto powers_of_ten = [] {
    std::array<power_of_ten, 200> powers{};
    const auto keep = [&](int q, uint128 value, int exponent) {
        const int e = q + decimals;
        if (e >= 0 && e <= 99) powers[static_cast<std::size_t>(e)] = in_two(value, exponent);
        if (e <= 0) powers[static_cast<std::size_t>(100 - e)] = in_two(value, exponent);
    };
    for_powers_of_ten(99 - decimals, 1, keep);
    for_powers_of_ten(-99 - decimals, -1, keep);
    return powers;
}();

// Shapes of numbers.

/// The last sixteen characters of a number: the two that may stand in each place ('0' stands for
/// any digit) and what its difference to '0' counts among its pair of places. A '-' counts twice
/// more than a '+'.
struct tail_shape {
    char one[tail_length + 1];
    char other[tail_length + 1];
    std::int8_t weights[tail_length];
};

constexpr tail_shape tail_of_8 = {
    "  0.00000000E+00", " -0.00000000D-00", {0, 0, 1, 0, 10, 1, 10, 1, 10, 1, 10, 1, 0, 50, 10, 1}};
constexpr tail_shape tail_of_12 = {"000000000000E+00",
                                   "000000000000D-00",
                                   {10, 1, 10, 1, 10, 1, 10, 1, 10, 1, 10, 1, 0, 50, 10, 1}};
/// A '+' in the exponent, with its weight. A '-' makes 100 more of it, the table's second half.
constexpr int plus_counts = static_cast<std::uint8_t>('+' - '0') * 50;

// Vectors. Of four numbers, `even` holds the first and the third, `odd` the others: interleaved by
// halves, they come out in order.

[[gnu::target("avx2,fma"), gnu::always_inline]] inline __m256i load_two(const char* a,
                                                                        const char* b) {
    return _mm256_inserti128_si256(
        _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(a))),
        _mm_loadu_si128(reinterpret_cast<const __m128i*>(b)), 1);
}

[[gnu::target("avx2,fma"), gnu::always_inline]] inline __m256i in_both_halves(const void* bytes) {
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(static_cast<const __m128i*>(bytes)));
}

/// All bits of the bytes that are at most `limit`.
[[gnu::target("avx2,fma"), gnu::always_inline]] inline __m256i at_most(__m256i bytes,
                                                                       __m256i limit) {
    return _mm256_cmpeq_epi8(_mm256_min_epu8(bytes, limit), bytes);
}

/// All bits of the characters that may stand where they do.
[[gnu::target("avx2,fma"), gnu::always_inline]] inline __m256i fits(__m256i text,
                                                                    const tail_shape& shape) {
    const __m256i one = in_both_halves(shape.one);
    const __m256i zero = _mm256_set1_epi8('0');
    const __m256i digit = at_most(_mm256_sub_epi8(text, zero), _mm256_set1_epi8(9));
    return _mm256_or_si256(_mm256_and_si256(digit, _mm256_cmpeq_epi8(one, zero)),
                           _mm256_or_si256(_mm256_cmpeq_epi8(text, one),
                                           _mm256_cmpeq_epi8(text, in_both_halves(shape.other))));
}

/// Of two numbers, in 32 bits each: three groups of up to four digits, and what the exponent
/// counts.
[[gnu::target("avx2,fma"), gnu::always_inline]] inline __m256i in_groups(__m256i text,
                                                                         const tail_shape& shape) {
    const __m256i digits = _mm256_sub_epi8(text, _mm256_set1_epi8('0'));
    const __m256i pairs = _mm256_maddubs_epi16(digits, in_both_halves(shape.weights));
    return _mm256_madd_epi16(
        pairs, _mm256_set_epi16(1, 1, 1, 100, 1, 100, 1, 100, 1, 1, 1, 100, 1, 100, 1, 100));
}

/// Numbers as their parts, each in 64 bits.
struct four_parts {
    __m256i integer;  // below 2^52
    __m256i power;    // index of a power of ten
    __m256i sign;     // in the highest bit
    __m256i fits;     // all bits, if all characters may stand where they do
};

[[gnu::target("avx2,fma"), gnu::always_inline]] inline four_parts take_tails(
    const char* const* tails, const tail_shape& shape) {
    const __m256i even = load_two(tails[0], tails[2]);
    const __m256i odd = load_two(tails[1], tails[3]);
    // Now in 16 bits each. Characters that do not fit must not lead out of the table.
    const __m256i groups = _mm256_packus_epi32(in_groups(even, shape), in_groups(odd, shape));
    const __m256i counted = _mm256_srli_epi64(groups, 48);
    const __m256i power = _mm256_min_epu16(
        _mm256_subs_epu16(counted, _mm256_set1_epi64x(plus_counts)), _mm256_set1_epi64x(199));
    const __m256i ten_thousand = _mm256_set1_epi64x(10'000);
    const __m256i joined = _mm256_madd_epi16(
        groups, _mm256_or_si256(ten_thousand, _mm256_set1_epi64x(0x0000'0001'0001'0000)));
    const __m256i integer =
        _mm256_add_epi64(_mm256_mul_epu32(joined, ten_thousand), _mm256_srli_epi64(joined, 32));
    // Of '-' and the blank, the lowest bits differ.
    const __m256i sign = _mm256_slli_epi64(_mm256_unpacklo_epi64(even, odd), 63 - 8);
    return {integer, power, sign, _mm256_and_si256(fits(even, shape), fits(odd, shape))};
}

/// Adds the heads of `length` characters that stand before the tails: blanks, a sign, a digit and
/// the point.
template <int length>
[[gnu::target("avx2,fma"), gnu::always_inline]] inline void add_heads(const char* const* tails,
                                                                      four_parts& parts) {
    // In the upper bytes; what is loaded beyond a head falls off.
    constexpr int unused = 64 - 8 * length;
    constexpr std::int64_t point_and_blanks = 0x2e00'2020'2020'2020 >> unused << unused;
    constexpr std::int64_t with_minus = point_and_blanks ^ ('-' ^ ' ') * (std::int64_t{1} << 40);
    alignas(32) std::int64_t loaded[4];
    for (int i = 0; i < 4; ++i) std::memcpy(&loaded[i], tails[i] - length, sizeof loaded[i]);
    const __m256i heads =
        _mm256_slli_epi64(_mm256_load_si256(reinterpret_cast<const __m256i*>(loaded)), unused);
    const __m256i digit_mask = _mm256_set1_epi64x(0x00ff'0000'0000'0000);
    const __m256i digit = _mm256_sub_epi64(
        _mm256_srli_epi64(_mm256_and_si256(heads, digit_mask), 48), _mm256_set1_epi64x('0'));
    const __m256i others = _mm256_andnot_si256(digit_mask, heads);
    const __m256i shaped =
        _mm256_or_si256(_mm256_cmpeq_epi64(others, _mm256_set1_epi64x(point_and_blanks)),
                        _mm256_cmpeq_epi64(others, _mm256_set1_epi64x(with_minus)));
    const __m256i fits = _mm256_and_si256(shaped, at_most(digit, _mm256_set1_epi64x(9)));
    const __m256i million = _mm256_set1_epi64x(1'000'000);
    const __m256i counted = _mm256_mul_epu32(_mm256_mul_epu32(digit, million), million);
    parts.integer = _mm256_add_epi64(parts.integer, counted);
    parts.sign = _mm256_slli_epi64(heads, 63 - 40);
    parts.fits = _mm256_and_si256(parts.fits, fits);
}

/// The numbers correctly rounded; where that is in doubt, all bits of `doubt` are set.
[[gnu::target("avx2,fma"), gnu::always_inline]] inline __m256d join(const four_parts& parts,
                                                                    const power_of_ten* powers,
                                                                    __m256d& doubt) {
    // Put behind the leading bit of 2^52, an integer is the excess over it.
    const __m256d start = _mm256_set1_pd(0x1p52);
    const __m256d m = _mm256_sub_pd(_mm256_or_pd(_mm256_castsi256_pd(parts.integer), start), start);

    alignas(32) std::int64_t at[4];
    _mm256_store_si256(reinterpret_cast<__m256i*>(at), parts.power);
    const __m256d even = _mm256_setr_pd(powers[at[0]].high, powers[at[0]].low, powers[at[2]].high,
                                        powers[at[2]].low);
    const __m256d odd = _mm256_setr_pd(powers[at[1]].high, powers[at[1]].low, powers[at[3]].high,
                                       powers[at[3]].low);
    const __m256d high = _mm256_unpacklo_pd(even, odd);
    const __m256d low = _mm256_unpackhi_pd(even, odd);

    const __m256d p = _mm256_mul_pd(m, high);
    const __m256d rest = _mm256_fmadd_pd(m, low, _mm256_fmsub_pd(m, high, p));
    const __m256d margin = _mm256_mul_pd(p, _mm256_set1_pd(0x1p-100));
    const __m256d value = _mm256_add_pd(p, _mm256_add_pd(rest, margin));
    const __m256d least = _mm256_add_pd(p, _mm256_sub_pd(rest, margin));
    doubt = _mm256_or_pd(doubt, _mm256_cmp_pd(value, least, _CMP_NEQ_UQ));
    const __m256d sign_bit = _mm256_set1_pd(-0.0);
    return _mm256_or_pd(value, _mm256_and_pd(_mm256_castsi256_pd(parts.sign), sign_bit));
}

/// Clears the bits of `blank` for the characters from the heads of four numbers on that are no
/// blanks.
[[gnu::target("avx2,fma"), gnu::always_inline]] inline void look_for_blanks(
    const char* const* tails, int head, __m128i& blank) {
    for (int i = 0; i < 4; ++i) {
        const __m128i text = _mm_loadu_si128(reinterpret_cast<const __m128i*>(tails[i] - head));
        blank = _mm_and_si128(blank, _mm_cmpeq_epi8(text, _mm_set1_epi8(' ')));
    }
}

/// Where the tails of the numbers stand in their lines.
template <const line_shape& line>
constexpr auto tail_places = [] {
    std::array<std::ptrdiff_t, numbers_at_once> places{};
    for (int n = 0; n < numbers_at_once; ++n) {
        const int start = n / numbers_of_line * (line.length() + 1) + line.margin;
        places[static_cast<std::size_t>(n)] =
            start + (n % numbers_of_line + 1) * line.width - tail_length;
    }
    return places;
}();

/// scan_columns() for one shape of lines, with values or without.
template <const line_shape& line, bool keep>
[[gnu::target("avx2,fma")]] std::size_t scan_lines(const char*& at, const char* end, double* values,
                                                   std::size_t most) {
    constexpr bool in_head = line.decimals == 12;
    constexpr const tail_shape& shape = in_head ? tail_of_12 : tail_of_8;
    constexpr const auto& powers = powers_of_ten<line.decimals>;
    constexpr int next_line = line.length() + 1;
    constexpr int text_length = numbers_at_once / numbers_of_line * next_line;
    std::size_t done = 0;
    for (; most - done >= numbers_at_once && end - at >= text_length; at += text_length) {
        bool good = true;
        for (const char* text = at; text != at + text_length; text += next_line) {
            good &= text[line.length()] == '\n';
            for (int i = 0; i < line.margin; ++i) good &= text[i] == ' ';
        }
        __m256i fit = _mm256_set1_epi8(-1);
        __m256d doubt = _mm256_setzero_pd();
        __m128i blank = _mm_set1_epi8(-1);
        alignas(32) double numbers[numbers_at_once];
        for (std::size_t n = 0; n < numbers_at_once; n += 4) {
            const char* tails[4];
            for (std::size_t i = 0; i < 4; ++i) tails[i] = at + tail_places<line>[n + i];
            four_parts parts = take_tails(tails, shape);
            if constexpr (in_head) add_heads<line.head()>(tails, parts);
            if constexpr (!in_head) look_for_blanks(tails, line.head(), blank);
            fit = _mm256_and_si256(fit, parts.fits);
            if constexpr (keep) _mm256_store_pd(numbers + n, join(parts, powers.data(), doubt));
        }
        if constexpr (!in_head) {
            constexpr int all = (1 << line.head()) - 1;
            good &= (_mm_movemask_epi8(blank) & all) == all;
        }
        good = good && _mm256_movemask_epi8(fit) == -1 && _mm256_movemask_pd(doubt) == 0;
        if (!good) break;
        if constexpr (keep) std::memcpy(values + done, numbers, sizeof numbers);
        done += numbers_at_once;
    }
    return done;
}

template <const line_shape& line>
std::size_t scan_lines(const char*& at, const char* end, double* values, std::size_t most) {
    return values != nullptr ? scan_lines<line, true>(at, end, values, most)
                             : scan_lines<line, false>(at, end, values, most);
}

bool has_instructions() {
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
}

#endif

}  // namespace

std::size_t scan_columns(const char*& at, const char* end, double* values, std::size_t most) {
#ifdef __x86_64__
    if (!has_instructions() || !is_allowed.load(std::memory_order_relaxed)) return 0;
    // Where the first line ends says what it may be.
    const auto may_be = [&](const line_shape& line) {
        return end - at > line.length() && at[line.length()] == '\n';
    };
    if (may_be(checkpoint_line)) return scan_lines<checkpoint_line>(at, end, values, most);
    if (may_be(dump_line)) return scan_lines<dump_line>(at, end, values, most);
    if (may_be(line_of_20)) return scan_lines<line_of_20>(at, end, values, most);
    if (may_be(line_of_22)) return scan_lines<line_of_22>(at, end, values, most);
#endif
    return 0;
}

void allow_scan_columns(bool allowed) {
    is_allowed = allowed;
}

}  // namespace flib
