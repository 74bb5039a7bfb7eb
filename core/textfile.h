// Reading words from text files that may hold anything: words are cut to a fixed capacity and
// the rest of an overlong word is dropped, never read as the next word.
#pragma once

#include <cstdint>
#include <cstdio>

// The white space that separates words.
inline bool isBlank(int c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

// Reads the next whitespace-separated word of `file` into `word` (capacity bytes, at most
// capacity - 1 characters kept). False at the end of the file, with `word` empty.
bool readFileWord(FILE* file, char* word, int32_t capacity);

// Reads the rest of the current line into `rest` (cut like a word); the line end stays unread.
void readRestOfFileLine(FILE* file, char* rest, int32_t capacity);
