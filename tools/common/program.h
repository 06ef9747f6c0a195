// How a tool begins and ends: its arguments, what it shows, its one-line complaints, its status.
#pragma once

#include <functional>
#include <span>
#include <string_view>

namespace tools {

namespace exit_status {
inline constexpr int fine = 0;
inline constexpr int doubtful = 1;  ///< there is a result, and something about it deserves doubt
inline constexpr int failed = 2;    ///< no result, or not all of it
}  // namespace exit_status

/// Writes "TOOL: REASON" as one line to standard error. Needs no memory; there is nobody to tell if
/// it fails.
void complain(std::string_view tool, std::string_view reason) noexcept;

/// Writes `text` to standard output. A reader who has left (a closed pipe) is no failure; any other
/// one throws flib::io_error.
void show(std::string_view text);

/// Everything that a main() has to do around `body`, which gets the arguments without the program's
/// name and returns the exit status. Whatever it throws is complained about in one line, with
/// status 2; a write that fails does not end in a signal.
int run_tool(std::string_view tool, int argc, char** argv,
             const std::function<int(std::span<const std::string_view>)>& body) noexcept;

}  // namespace tools
