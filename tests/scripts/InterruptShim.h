// Ctrl-C sent to the minihost program, each platform's own way (InterruptShim_posix.cpp,
// InterruptShim_win.cpp), for InterruptTest.cpp. One program at a time; each step gives "" when
// it went as it must, or what went wrong.
#pragma once

#include <string>

namespace minihost::interrupt {

// The size of the file that the program's script copies.
constexpr unsigned long long kCopySize = 1ULL << 30;

// Starts minihost on script, its output and errors going to the file output.
std::string Start(std::string const& script, std::string const& output);
// Waits until the program is inside its copy of the file.
std::string ReachTheCopy();
// Sends a Ctrl-C, which the program must take and run on.
std::string FirstCtrlC();
// Sends another, which must end the program at once, as Ctrl-C ends a program.
std::string SecondCtrlC();
// Ends the program when it still runs.
void End();

}  // namespace minihost::interrupt
