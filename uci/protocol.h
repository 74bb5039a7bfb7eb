// The UCI program: its game record, the commands, and the search's poll and reports.
#pragma once

// Start-up (tables, book, the start position), then the commands until quit or the end of
// the input. Returns the exit status.
int runUci();
