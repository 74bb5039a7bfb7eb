#include "uci/reader.h"

#include <cerrno>
#include <cstring>
#include <poll.h>
#include <unistd.h>

namespace {

// Bytes arrived and not yet handled are buffer[begin, end); a peeked line ends at lineEnd
// (its terminator written over with NUL), -1 while none is peeked.
constexpr size_t bufferSize = maxInputLine + 1;
char buffer[bufferSize + 1];
size_t begin = 0;
size_t end = 0;
long lineEnd = -1;
bool ended = false;
bool discarding = false; // inside a line too long to keep: dropped up to its newline
bool overlongNotice = false;

void compact() {
    if (begin == 0) return;
    std::memmove(buffer, buffer + begin, end - begin);
    end -= begin;
    if (lineEnd >= 0) lineEnd -= static_cast<long>(begin);
    begin = 0;
}

// One read(2) of what standard input holds; blocks only when asked to.
bool readOnce(bool block) {
    if (ended) return false;
    if (!block) {
        pollfd p = {0, POLLIN, 0};
        if (::poll(&p, 1, 0) <= 0) return true; // nothing waiting (or nothing to say)
    }
    compact();
    if (end == bufferSize) {
        // A full buffer: lines already complete wait for their turn; without a newline the
        // line is too long to keep.
        if (lineEnd >= 0 || std::memchr(buffer, '\n', end) != nullptr) return true;
        discarding = true;
        overlongNotice = true;
        begin = end = 0;
    }
    ssize_t n;
    do {
        n = ::read(0, buffer + end, bufferSize - end);
    } while (n < 0 && errno == EINTR);
    if (n <= 0) {
        ended = true;
        return false;
    }
    end += static_cast<size_t>(n);
    return true;
}

} // namespace

bool readWaitingInput() {
    return readOnce(false);
}

const char* peekLine() {
    if (lineEnd >= 0) return buffer + begin;
    for (;;) {
        char* newline = static_cast<char*>(std::memchr(buffer + begin, '\n', end - begin));
        if (newline == nullptr) {
            if (!ended || end == begin) return nullptr;
            newline = buffer + end; // the last line of the input has no newline
            if (discarding) {
                begin = end;
                discarding = false;
                return nullptr;
            }
        }
        if (discarding) {
            begin = static_cast<size_t>(newline + 1 - buffer);
            discarding = false;
            continue;
        }
        *newline = '\0';
        lineEnd = newline - buffer;
        if (newline > buffer + begin && newline[-1] == '\r') newline[-1] = '\0';
        // Tabs separate words as blanks do.
        for (char* c = buffer + begin; c < newline; ++c) {
            if (*c == '\t') *c = ' ';
        }
        return buffer + begin;
    }
}

void dropLine() {
    if (lineEnd < 0) return;
    begin = static_cast<size_t>(lineEnd) + 1;
    if (begin > end) begin = end;
    lineEnd = -1;
}

const char* waitForLine() {
    for (;;) {
        if (const char* line = peekLine()) return line;
        if (!readOnce(true)) return peekLine();
    }
}

bool takeOverlongNotice() {
    const bool notice = overlongNotice;
    overlongNotice = false;
    return notice;
}
