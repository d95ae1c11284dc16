// The text helpers that every table's converters stand on: splitting a line
// into fields, MAC addresses and hexadecimal bytes both ways, bounded
// appending, the text of an int reply. None allocates or reports an error.
// A pointer into one of the helpers' own buffers holds until the buffer's next
// use. Names and edge behaviour are the Lua front end's contract.
#pragma once

#include "rpc/export.h"

// The int at `value` as decimal text; "-1" for a null pointer. Own buffer.
EXPORT char* int2str(void* value);

// Six bytes as "AA-BB-CC-DD-EE-FF" into `text` (18 bytes at least), or into the
// next of four buffers of its own when `text` is null.
EXPORT char* mac2str(const void* mac, char* text);

// A MAC address text as six bytes into `mac`, or into the next of four buffers
// of its own when `mac` is null. Notation by the separator that occurs in the
// text, in this order: "aabb.ccdd.eeff", "aa:bb:cc:dd:ee:ff",
// "AA-BB-CC-DD-EE-FF", else "aabbccddeeff". Bytes the scan does not reach are 0.
EXPORT void* str2mac(const char* text, void* mac);

// Cuts `text` at every `delimiter` and points field[0..max) at the parts, the
// slots beyond them at an empty text. Empty parts count. Returns how many slots
// were set, at most `max` (1 at least).
EXPORT int strsplit(char* text, char delimiter, char** field, int max);

// As strsplit, on any of `delimiters` as strtok does: runs count as one, empty
// parts vanish. Stops after `max` parts and returns how many it found.
EXPORT int strsplit2(char* text, const char* delimiters, char** field, int max);

// `count` bytes as lower-case hex digits into `text` of `capacity`, while more
// than one character is free. Returns the characters advanced: two a byte, even
// for a last byte of which only one digit fitted. Without bytes nothing is
// written, not even a NUL.
EXPORT int hex2str(const void* bytes, int count, char* text, int capacity);

// Pairs of hex digits of `text` (`length` characters) as bytes, at most `max`.
// Returns how many bytes were stored. A pair that does not scan repeats the
// byte before it (0 for the first).
EXPORT int str2hex(const char* text, int length, void* bytes, int max);

// printf to the end of the text in `text` of `capacity`. Returns the new
// length, capacity - 1 when the text was cut, 0 when it was full before.
EXPORT int strappend(char* text, int capacity, const char* format, ...) __attribute__((format(printf, 3, 4)));
