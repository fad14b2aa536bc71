#pragma once

/// Writes one diagnostic to standard output, formatted as by printf.
///
/// At most 9,999 characters are written; a longer text is cut, but keeps its line end. The text reaches the
/// system before the call returns, so it survives even if the process ends right after. Any thread may call
/// it; the texts of two threads never mix.
///
/// A call blocks while standard output is stopped: a full pipe, or a terminal after ^S. The client's watchdog
/// ends the process even then (network/PacketReceiver.h).
///
/// Text that another machine or the user chose must pass through printable() first.
void DebugPrint(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// DebugPrint for a diagnostic that received data causes. It writes at most mostReceivedTexts of them a
/// second, so no sender can flood the output. In a later second a line with the number left out comes first.
void DebugPrintReceived(const char* format, ...) __attribute__((format(printf, 1, 2)));

constexpr unsigned long mostReceivedTexts = 100;  ///< a second
