#include "search/settings.h"

int32_t bookEnabled = 1;
int32_t fullWidthDepth = 24;
int32_t quiescenceDepth = 48;
int32_t searchTimeLimit = 0;
volatile sig_atomic_t searchRunning = 0;
