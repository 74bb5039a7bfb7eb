// The program's version, shown in banners and identity lines of both programs.
#pragma once

constexpr const char* programVersion = "Version 4.14";
// The same number alone, for the UCI identity line.
constexpr const char* versionNumber = "4.14";
