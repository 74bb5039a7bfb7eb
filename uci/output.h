// Every line the UCI program sends goes out whole and at once.
#pragma once

// printf-style: the line, a newline, and a flush.
void sendLine(const char* format, ...) __attribute__((format(printf, 1, 2)));
