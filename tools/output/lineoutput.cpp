// SPDX-License-Identifier: MIT
#include "output/lineoutput.h"

#include "output/writeall.h"

namespace output {
namespace {

constexpr std::size_t maxWrite = 4096;

/// The longest start of UTF-8 text that has at most `size` bytes and cuts no character.
std::string_view cutToSize(std::string_view text, std::size_t size)
{
    const auto isContinuation = [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xc0) == 0x80;
    };
    if (text.size() <= size)
        return text;
    while (size > 0 && isContinuation(text[size]))
        --size;
    return text.substr(0, size);
}

} // namespace

LineOutput::LineOutput(int descriptor)
    : m_descriptor(descriptor)
{
}

LineOutput::~LineOutput()
{
    flush();
}

void LineOutput::line(std::string_view text)
{
    const auto fitting = cutToSize(text, maxWrite - 1);
    if (m_pending.size() + fitting.size() + 1 > maxWrite)
        flush();
    m_pending += fitting;
    m_pending += '\n';
}

void LineOutput::flush()
{
    static_cast<void>(writeAll(m_descriptor, std::as_bytes(std::span(m_pending))));
    m_pending.clear();
}

} // namespace output
