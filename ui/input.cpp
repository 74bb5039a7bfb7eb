#include "ui/input.h"

#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <poll.h>
#include <unistd.h>

#include "core/textfile.h"

// The reader's buffer: bytes [start, end) are read from descriptor 0 and not yet used.
static struct {
    char bytes[4096];
    int32_t start = 0;
    int32_t end = 0;
    bool atEnd = false;
} reader;

// Makes at least `count` unused bytes available unless input ends first. Returns the number of
// unused bytes. A read interrupted by a signal is simply restarted.
static int32_t fill(int32_t count) {
    while (reader.end - reader.start < count && !reader.atEnd) {
        if (reader.start > 0) {
            int32_t kept = reader.end - reader.start;
            for (int32_t i = 0; i < kept; ++i)
                reader.bytes[i] = reader.bytes[reader.start + i];
            reader.start = 0;
            reader.end = kept;
        }
        if (reader.end == static_cast<int32_t>(sizeof reader.bytes)) break; // full: look no further
        ssize_t got = read(0, reader.bytes + reader.end, sizeof reader.bytes - reader.end);
        if (got > 0) {
            reader.end += static_cast<int32_t>(got);
        } else if (got < 0 && errno == EINTR) {
            continue;
        } else {
            reader.atEnd = true;
        }
    }
    return reader.end - reader.start;
}

// The byte `offset` places ahead, or -1 when input ends before it.
static int32_t peek(int32_t offset) {
    if (fill(offset + 1) <= offset) return -1;
    return static_cast<unsigned char>(reader.bytes[reader.start + offset]);
}

static void skipBlanks() {
    while (isBlank(peek(0)))
        ++reader.start;
}

bool readWord(char* word) {
    skipBlanks();
    int32_t length = 0;
    for (int32_t c = peek(0); c != -1 && !isBlank(c); c = peek(0)) {
        if (length < inputWordSize - 1) word[length++] = static_cast<char>(c);
        ++reader.start;
    }
    word[length] = '\0';
    return length > 0;
}

bool readLong(long& value) {
    skipBlanks();
    int32_t first = peek(0);
    int32_t signLength = first == '+' || first == '-' ? 1 : 0;
    int32_t digit = peek(signLength);
    if (digit < '0' || digit > '9') return false;
    bool negative = first == '-';
    reader.start += signLength;
    unsigned long magnitude = 0;
    const unsigned long limit = negative ? static_cast<unsigned long>(LONG_MAX) + 1 : LONG_MAX;
    for (int32_t c = peek(0); c >= '0' && c <= '9'; c = peek(0)) {
        unsigned long d = static_cast<unsigned long>(c - '0');
        magnitude = magnitude > (limit - d) / 10 ? limit : magnitude * 10 + d;
        ++reader.start;
    }
    if (negative) {
        value = magnitude == static_cast<unsigned long>(LONG_MAX) + 1
                    ? LONG_MIN
                    : -static_cast<long>(magnitude);
    } else {
        value = static_cast<long>(magnitude);
    }
    return true;
}

bool readReal(double& value) {
    skipBlanks();
    // Measure the longest prefix that forms a decimal number, without consuming it yet.
    char text[64];
    int32_t length = 0;
    int32_t at = 0;
    auto take = [&]() {
        if (length < static_cast<int32_t>(sizeof text) - 1)
            text[length++] = static_cast<char>(peek(at));
        ++at;
    };
    if (peek(at) == '+' || peek(at) == '-') take();
    int32_t digits = 0;
    while (peek(at) >= '0' && peek(at) <= '9') {
        take();
        ++digits;
    }
    if (peek(at) == '.') {
        take();
        while (peek(at) >= '0' && peek(at) <= '9') {
            take();
            ++digits;
        }
    }
    if (digits == 0) return false;
    if (peek(at) == 'e' || peek(at) == 'E') {
        int32_t ahead = at + 1;
        if (peek(ahead) == '+' || peek(ahead) == '-') ++ahead;
        if (peek(ahead) >= '0' && peek(ahead) <= '9') {
            while (at < ahead)
                take();
            while (peek(at) >= '0' && peek(at) <= '9')
                take();
        }
    }
    text[length] = '\0';
    reader.start += at;
    value = std::strtod(text, nullptr);
    return true;
}

bool readClockBase(double& seconds) {
    double minutes = 0;
    if (!readReal(minutes)) return false;
    seconds = minutes * 60;
    if (peek(0) == ':' && peek(1) >= '0' && peek(1) <= '9') {
        ++reader.start;
        long extra = 0;
        readLong(extra);
        seconds += std::signbit(minutes) ? -static_cast<double>(extra) : static_cast<double>(extra);
    }
    return true;
}

void skipRestOfLine() {
    for (int32_t c = peek(0); c != -1 && c != '\n'; c = peek(0))
        ++reader.start;
}

bool inputWaiting() {
    // Blanks left in the buffer behind the last word read are not new input.
    while (reader.start < reader.end &&
           isBlank(static_cast<unsigned char>(reader.bytes[reader.start])))
        ++reader.start;
    if (reader.end > reader.start || reader.atEnd) return true;
    pollfd query = {0, POLLIN, 0};
    int result = poll(&query, 1, 0);
    return result != 0;
}

void resetInput() {
    reader.start = 0;
    reader.end = 0;
    reader.atEnd = false;
}
