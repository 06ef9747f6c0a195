// What a command line of qm_file asks for.
#include <gtest/gtest.h>

#include <iterator>
#include <sstream>

#include "qm_file/request.h"
#include "support/support.h"

namespace {

/// "FORM QUANTITY: FILES", "probe ROUTINE FILE: INPUTS", "shown: FIRST LINE", or how it ends.
std::string asked(const std::string& line) {
    std::istringstream words(line);
    const std::vector<std::string> list{std::istream_iterator<std::string>(words), {}};
    const std::vector<std::string_view> arguments(list.begin(), list.end());
    return support::answer_of("", [&] {
        const qm_file::request request = qm_file::request_of(arguments);
        if (request.shown) return "shown: " + request.shown->substr(0, request.shown->find('\n'));
        std::string text;
        if (request.routine) {
            text = "probe " + *request.routine + " " + request.files.at(0) + ":";
            for (const std::int32_t input : request.inputs) text += " " + std::to_string(input);
            return text;
        }
        const char* const forms[] = {"text", "json", "xyz"};
        text = forms[static_cast<int>(request.wanted)];
        text.append(" ").append(request.only == nullptr ? "all" : request.only->name).append(":");
        for (const std::string& file : request.files) text += " " + file;
        return text;
    });
}

TEST(QmFileRequest, IsUnderstoodAsTheRowsSay) {
    for (const auto& row : support::table_of("qm_file_requests.txt")) {
        EXPECT_EQ(asked(row[0]).rfind(row[1], 0), 0U) << row[0] << "\n" << asked(row[0]);
    }
}

}  // namespace
