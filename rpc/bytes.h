// Values at places that know no alignment: in a record, in a datagram.
#pragma once

#include <cstring>

template <class T> T load(const void* from)
{
    T value;
    memcpy(&value, from, sizeof value);
    return value;
}

template <class T> void store(void* to, T value) { memcpy(to, &value, sizeof value); }
