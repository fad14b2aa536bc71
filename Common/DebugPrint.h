#pragma once

/// Writes one diagnostic to standard output, formatted as by printf.
///
/// At most 9,999 characters are written; a longer text is cut, but keeps its line end. The text is handed to
/// the system before the call returns, so a diagnostic is on disk or in the pipe even if the process ends
/// right after. Any thread may call it; texts of different threads never mix within one call.
///
/// A diagnostic must not stop the game: where standard output is a pipe that nobody reads, a call waits for a
/// second at most, and later ones drop their texts until somebody reads again.
void DebugPrint(const char* format, ...) __attribute__((format(printf, 1, 2)));
