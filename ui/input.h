// The program's own reader of standard input. It reads descriptor 0 into its own buffer (no
// stdio read-ahead), so that the interruption poll can tell whether unread input is waiting.
#pragma once

#include <cstdint>

// Size of the buffer an input word is read into; longer words are cut to inputWordSize - 1
// characters and the rest of the word is discarded.
constexpr int32_t inputWordSize = 512;

// Reads the next whitespace-separated word into `word` (inputWordSize bytes). Returns false at
// the end of input (or on a read error), with `word` empty.
bool readWord(char* word);

// Reads a decimal number the way "%ld" does, as the next word or the start of it: blanks are
// skipped, then an optional sign and digits. When no number follows, nothing but the blanks is
// consumed and false is returned. Values beyond the range of long are clamped.
bool readLong(long& value);

// Reads a real number the way "%lf" does for plain decimals: blanks, an optional sign, digits
// with an optional decimal point and fraction, an optional exponent. When no number follows,
// nothing but the blanks is consumed and false is returned.
bool readReal(double& value);

// Reads the base of a time control in seconds: minutes as readReal reads them, optionally
// followed by ":" and whole seconds, as XBoard writes a base that is not a whole number of
// minutes ("0:30" is 30 seconds, "1:05" 65). When no number follows, nothing but the blanks is
// consumed and false is returned.
bool readClockBase(double& seconds);

// Discards the rest of the current input line, up to (not including) its line end.
void skipRestOfLine();

// True when input is waiting: bytes other than blanks that the reader has buffered and not yet
// used (buffered blanks are dropped), or bytes on descriptor 0 that a read would return without
// blocking (also true at end of input or when the question cannot be answered).
bool inputWaiting();

// Forgets any buffered input and the end-of-input state (for tests).
void resetInput();
