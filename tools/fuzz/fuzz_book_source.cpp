// The book builder on any source text: it never overruns, and writes at most one record per
// token of the source.
#include <cstdlib>

#include "fuzz_support.h"
#include "search/book.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    setUpProgramOnce();
    writeFile("openings.txt", data, size);
    createBook();
    FILE* book = std::fopen("openings.dat", "r");
    if (book == nullptr) std::abort();
    size_t records = 0;
    for (int c = std::fgetc(book); c != EOF; c = std::fgetc(book))
        records += c == '\n';
    std::fclose(book);
    if (records > size / 2 + 1) std::abort(); // a record needs a token of two characters
    return 0;
}
