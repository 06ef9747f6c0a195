// A dump of amplitudes with its values as texts, to be changed.
#pragma once

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "support/support.h"

namespace support {

struct dump {
    explicit dump(const std::string& file) {
        const std::string text = contents_of(file);
        const std::size_t end = text.find("right):\n") + 8;
        heading = text.substr(0, end);
        std::istringstream items(text.substr(end));
        for (std::string item; items >> item;) values.push_back(item);
    }

    /// Five values a line, in columns where they fit, under a heading that tells how many there
    /// are.
    void write(const std::string& file) const {
        const std::size_t from = heading.find("length") + 6;
        std::string text = heading.substr(0, from) + ' ' + std::to_string(values.size()) +
                           heading.substr(heading.find(" (read", from));
        for (std::size_t i = 0; i < values.size(); ++i) {
            const std::string& value = values[i];
            text += (i % 5 == 0 ? " " : "") +
                    std::string(20 - std::min<std::size_t>(19, value.size()), ' ') + value +
                    (i % 5 == 4 || i + 1 == values.size() ? "\n" : "");
        }
        write_file(file, text);
    }

    std::string heading;
    std::vector<std::string> values;
};

}  // namespace support
