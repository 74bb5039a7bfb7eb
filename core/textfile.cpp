#include "core/textfile.h"

bool readFileWord(FILE* file, char* word, int32_t capacity) {
    int c = std::getc(file);
    while (c != EOF && isBlank(c))
        c = std::getc(file);
    int32_t length = 0;
    while (c != EOF && !isBlank(c)) {
        if (length < capacity - 1) word[length++] = static_cast<char>(c);
        c = std::getc(file);
    }
    if (c != EOF) std::ungetc(c, file);
    word[length] = '\0';
    return length > 0;
}

void readRestOfFileLine(FILE* file, char* rest, int32_t capacity) {
    int32_t length = 0;
    int c = std::getc(file);
    while (c != EOF && c != '\n') {
        if (length < capacity - 1) rest[length++] = static_cast<char>(c);
        c = std::getc(file);
    }
    if (c != EOF) std::ungetc(c, file);
    rest[length] = '\0';
}
