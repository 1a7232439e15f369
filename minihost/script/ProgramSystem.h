// ProgramSystem: what the program minihost asks the system, one function each: its command
// line, its own file, whether standard input is a terminal, the whole of a script file or of
// standard input, and the directory part of a path. ProgramSystem_posix.cpp answers with
// argv, /proc/self/exe, isatty and read; ProgramSystem_win.cpp with GetCommandLineW,
// GetModuleFileNameW, GetConsoleMode and _wfopen. Texts and paths are UTF-8 on Windows, as
// everywhere in minihost. It runs no script and loads no module.
#pragma once

#include <string>
#include <vector>

namespace minihost {

// The command line, the program's name first.
//   POSIX: argv as it is;  Windows: the UTF-16 command line (GetCommandLineW) in UTF-8, so
//   that a path in any script arrives whole, not in the narrow code page of argv
std::vector<std::string> ProgramArguments(int argc, char** argv);

// Makes standard input, output and error pass bytes unchanged.
//   POSIX: nothing to do;  Windows: binary mode, so that no "\r" is added before "\n" nor
//   taken away, and output is the same on every system
void UseBinaryStandardStreams();

// The path of the running program's file, or "" when the system does not tell.
//   "/opt/tavrel/bin/minihost";  Windows: "C:\tavrel\bin\minihost.exe"
std::string ProgramPath();

// The directory part of path; a path without one is in ".".
//   "/a/t.tvl" => "/a";  "/t.tvl" => "/";  "t.tvl" => "."
//   Windows, where "\" separates too: "C:\a\t.tvl" => "C:\a";  "C:\t.tvl" => "C:\";
//   "a/b\t.tvl" => "a/b"
std::string DirectoryOf(std::string const& path);

// Whether standard input is a terminal that someone types at (a console on Windows).
//   POSIX: isatty;  Windows: a console only, not the NUL device (which _isatty counts as a
//   terminal, being a character device)
bool StandardInputIsTerminal();

// All bytes of the file at path; false with error set to the system's words.
//   missing => "No such file or directory";  a directory => "Is a directory"
//   a FIFO => its bytes until its writer closes it (POSIX)
bool ReadWholeFile(std::string const& path, std::string& text, std::string& error);

// All bytes of standard input until its end; false with error set to the system's words.
bool ReadStandardInput(std::string& text, std::string& error);

}  // namespace minihost
