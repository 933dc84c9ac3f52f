#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include <QByteArray>

/// The bytes libFuzzer hands over, as a value of their own.
inline QByteArray fuzzInput(const std::uint8_t *data, std::size_t size)
{
    return {reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)};
}

/// A promise of the code under test; its breach ends the fuzzer with the input that broke it.
inline void promise(bool kept)
{
    if (!kept)
        std::abort();
}
