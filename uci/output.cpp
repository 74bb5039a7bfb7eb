#include "uci/output.h"

#include <cstdarg>
#include <cstdio>

void sendLine(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    std::vfprintf(stdout, format, arguments);
    va_end(arguments);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}
