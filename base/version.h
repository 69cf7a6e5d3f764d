#pragma once
// The program's name and version, the one place they are written: the
// banner, the xboard feature line and "name" reply, the PGN "Annotator" and
// the engine's last soul fallback are all made from these.
namespace kobubase {

inline constexpr const char* PROGRAM_NAME = "Talvena";
inline constexpr const char* PROGRAM_VERSION = "3.0.23";

}  // namespace kobubase
