#include "flib/text/string.h"

#include <gtest/gtest.h>

#include <functional>

#include "flib/text/string_utility.h"

namespace flib {
namespace {

using text = std::string;

text changed(text a, const std::function<void(text_span)>& change) {
    change(a);
    return a;
}

TEST(String, ChangesInPlace) {
    EXPECT_EQ(changed("  N A E =", del_space), "NAE=     ");
    EXPECT_EQ(changed("a\t b", del_space), "a\tb ");
    EXPECT_EQ(changed("NFC@[`{ \xc9", lowercase), "nfc@[`{ \xc9");
    EXPECT_EQ(strlowcase("NFC 1Z "), "nfc 1z ");
    EXPECT_EQ(string_utility::strlowcase("NFC 1Z "), "nfc 1z ");
    const text cases[][3] = {
        {"XYXY", "xy", "XY  "},
        {"abXYc", "XY", "ab   "},
        {"aXYbcd", "XY ", "abcd  "},
        {"abcXY", "xY", "abc  "},
        {"short ", "longer", "short "},
        {"XYaXYb ", "XY", "a      "},
        {"Xa", "X", "a "},
        {"  ", "x", "  "},
        {"a b", "", "a b"},
    };
    for (const auto& [string, word, expected] : cases) {
        const auto removes = [&w = word](text_span a) { str_delete(a, w); };
        EXPECT_EQ(changed(string, removes), expected) << string;
    }
}

TEST(String, JudgesAndLeftJustifies) {
    const auto judged = [](text a) {
        text same = a;
        const text kinds =
            text(is_letter(a) ? "letters " : "") + (is_number(same) ? "digits " : "");
        return kinds + (a == same ? a : "unlike");
    };
    EXPECT_EQ(judged("  Az"), "letters Az  ");
    EXPECT_EQ(judged(" 09 "), "digits 09  ");
    for (const char* a : {"A b", "-1", "1.", "   ", "a\t", "@", "[", "`", "{", "/", ":", "a1"}) {
        EXPECT_EQ(judged(a), a);
    }
}

TEST(String, NumberOfWords) {
    EXPECT_EQ(number_of_words("a bc  d e  "), 4);
    EXPECT_EQ(number_of_words("  a b"), 1);
    EXPECT_EQ(number_of_words(" a b"), 1);
    EXPECT_EQ(number_of_words("a\tb"), 1);
    EXPECT_EQ(number_of_words("   "), 0);
}

}  // namespace
}  // namespace flib
