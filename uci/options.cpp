#include "uci/options.h"

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

#include "core/version.h"
#include "search/book.h"
#include "search/transtable.h"
#include "uci/output.h"

#ifndef KOVREL_DATADIR
#define KOVREL_DATADIR "/usr/local/share/games/kovrel"
#endif

UciSettings uciSettings = {
    defaultHashMegabytes, true, false, defaultMoveOverhead, false, false, false};

namespace {

// The default of BookFile, as findDefaultBook settled it.
char defaultBook[bookPathSize] = "openings.dat";

enum class OptionId { hash, ownBook, bookFile, ponder, moveOverhead, clearHash };

// One option as `uci` announces it: {id, name, the rest of its option line}.
struct OptionEntry {
    OptionId id;
    const char* name;
};
constexpr OptionEntry options[] = {
    {OptionId::hash, "Hash"},
    {OptionId::ownBook, "OwnBook"},
    {OptionId::bookFile, "BookFile"},
    {OptionId::ponder, "Ponder"},
    {OptionId::moveOverhead, "Move Overhead"},
    {OptionId::clearHash, "Clear Hash"},
};

bool fileExists(const char* path) {
    return ::access(path, R_OK) == 0;
}

// Copies `a` + `b` into `out` (bookPathSize bytes); false when it does not fit.
bool joinPath(char* out, const char* a, const char* b) {
    const int n = std::snprintf(out, bookPathSize, "%s%s", a, b);
    return n > 0 && n < bookPathSize;
}

bool equalIgnoringCase(const char* a, const char* b) {
    for (; *a != '\0' && *b != '\0'; ++a, ++b) {
        if (std::tolower(static_cast<unsigned char>(*a)) !=
            std::tolower(static_cast<unsigned char>(*b)))
            return false;
    }
    return *a == *b;
}

// A whole number from `text` in [low, high]; false when the text is anything else.
bool readNumber(const char* text, int64_t low, int64_t high, int64_t& value) {
    char* rest = nullptr;
    errno = 0;
    const long long v = std::strtoll(text, &rest, 10);
    if (rest == text || errno != 0) return false;
    while (*rest == ' ' || *rest == '\t')
        ++rest;
    if (*rest != '\0' || v < low || v > high) return false;
    value = v;
    return true;
}

bool readBoolean(const char* text, bool& value) {
    if (equalIgnoringCase(text, "true")) {
        value = true;
    } else if (equalIgnoringCase(text, "false")) {
        value = false;
    } else {
        return false;
    }
    return true;
}

void setHash(int64_t megabytes) {
    const int32_t bits = hashBitsFor(megabytes);
    if (bits == hashBits) {
        uciSettings.hashMegabytes = static_cast<int32_t>(megabytes);
        return;
    }
    const int32_t previous = hashBits;
    freeSearchTables();
    hashBits = bits;
    if (allocateTranspositionTables() && allocateHistoryTable()) {
        uciSettings.hashMegabytes = static_cast<int32_t>(megabytes);
    } else {
        freeSearchTables();
        hashBits = previous;
        const bool restored = allocateTranspositionTables() && allocateHistoryTable();
        sendLine("info string Hash: %lld MB cannot be allocated; %s",
                 static_cast<long long>(megabytes),
                 restored ? "the tables keep their size" : "no tables left");
        if (!restored) std::exit(1);
    }
    clearSearchTables();
}

} // namespace

void findDefaultBook() {
    const char* name = "/openings.dat";
    char exe[bookPathSize] = "";
    const ssize_t n = ::readlink("/proc/self/exe", exe, sizeof exe - 1);
    if (n > 0) {
        exe[n] = '\0';
        if (char* slash = std::strrchr(exe, '/')) *slash = '\0';
    }
    char candidate[bookPathSize];
    if (joinPath(candidate, KOVREL_DATADIR, name) && fileExists(candidate)) {
        std::memcpy(defaultBook, candidate, sizeof candidate);
    } else if (n > 0 && joinPath(candidate, exe, "/../share/games/kovrel/openings.dat") &&
               fileExists(candidate)) {
        std::memcpy(defaultBook, candidate, sizeof candidate);
    } else if (n > 0 && joinPath(candidate, exe, name) && fileExists(candidate)) {
        std::memcpy(defaultBook, candidate, sizeof candidate);
    } else {
        std::strcpy(defaultBook, "openings.dat");
    }
    std::memcpy(bookFile, defaultBook, sizeof defaultBook);
}

void printIdentity() {
    sendLine("id name Kovrel %s", versionNumber);
    sendLine("id author the Kovrel developers");
    sendLine("option name Hash type spin default %d min 1 max %d", defaultHashMegabytes,
             maxHashMegabytes);
    sendLine("option name OwnBook type check default true");
    sendLine("option name BookFile type string default %s", defaultBook);
    sendLine("option name Ponder type check default false");
    sendLine("option name Move Overhead type spin default %d min 0 max %d", defaultMoveOverhead,
             maxMoveOverhead);
    sendLine("option name Clear Hash type button");
    sendLine("uciok");
}

void setOption(const char* text) {
    // name <words> [value <text>]: the name runs up to the word "value".
    char name[64] = "";
    const char* p = text;
    while (*p == ' ' || *p == '\t')
        ++p;
    if (std::strncmp(p, "name", 4) != 0 || (p[4] != ' ' && p[4] != '\t'))
        return sendLine("info string setoption: expected 'name <option>'");
    p += 4;
    const char* value = nullptr;
    size_t length = 0;
    for (;;) {
        while (*p == ' ' || *p == '\t')
            ++p;
        if (*p == '\0') break;
        const char* word = p;
        while (*p != '\0' && *p != ' ' && *p != '\t')
            ++p;
        const size_t wordLength = static_cast<size_t>(p - word);
        if (wordLength == 5 && std::strncmp(word, "value", 5) == 0) {
            value = p;
            while (*value == ' ' || *value == '\t')
                ++value;
            break;
        }
        if (length + wordLength + 2 > sizeof name)
            return sendLine("info string setoption: unknown option");
        if (length > 0) name[length++] = ' ';
        std::memcpy(name + length, word, wordLength);
        length += wordLength;
        name[length] = '\0';
    }
    const OptionEntry* option = nullptr;
    for (const OptionEntry& o : options) {
        if (equalIgnoringCase(name, o.name)) option = &o;
    }
    if (option == nullptr) return sendLine("info string setoption: unknown option '%s'", name);
    if (option->id != OptionId::clearHash && value == nullptr)
        return sendLine("info string setoption %s: a value is needed", option->name);

    int64_t number = 0;
    switch (option->id) {
    case OptionId::hash:
        if (!readNumber(value, 1, maxHashMegabytes, number))
            return sendLine("info string setoption Hash: the value must be a number from 1 to %d",
                            maxHashMegabytes);
        return setHash(number);
    case OptionId::moveOverhead:
        if (!readNumber(value, 0, maxMoveOverhead, number))
            return sendLine(
                "info string setoption Move Overhead: the value must be a number from 0 to %d",
                maxMoveOverhead);
        uciSettings.moveOverhead = static_cast<int32_t>(number);
        return;
    case OptionId::ownBook:
        if (!readBoolean(value, uciSettings.ownBook))
            return sendLine("info string setoption OwnBook: the value must be true or false");
        return;
    case OptionId::ponder:
        if (!readBoolean(value, uciSettings.ponder))
            return sendLine("info string setoption Ponder: the value must be true or false");
        return;
    case OptionId::bookFile: {
        // An empty value (or the GUIs' "<empty>") puts the default back.
        const char* path =
            *value == '\0' || std::strcmp(value, "<empty>") == 0 ? defaultBook : value;
        if (std::strlen(path) >= static_cast<size_t>(bookPathSize))
            return sendLine("info string setoption BookFile: the path is too long");
        std::strcpy(bookFile, path);
        uciSettings.bookNoticed = false;
        uciSettings.bookFound = false;
        return;
    }
    case OptionId::clearHash:
        clearSearchTables();
        return;
    }
}
