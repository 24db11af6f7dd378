// SPDX-License-Identifier: MIT
#include "cr2hdr/report.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include <unistd.h>

namespace dualiso {
namespace {

constexpr std::size_t largestWrite = 4096;
constexpr std::size_t largestLabel = 1024;

} // namespace

void print(std::string_view label, std::string_view value)
{
    std::string line(label);
    line += " : ";
    line += value;
    line.resize(std::min(line.size(), largestWrite - 1));
    line += '\n';
    std::string_view rest = line;
    while (!rest.empty()) {
        const ssize_t count = ::write(STDOUT_FILENO, rest.data(), rest.size());
        if (count >= 0) {
            rest.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            return; // nobody listens
        }
    }
}

std::string labelOf(const std::filesystem::path &path)
{
    std::string label = path.string();
    if (label.size() > largestLabel) {
        label = "..." + label.substr(label.size() - largestLabel);
    }
    std::replace_if(
        label.begin(), label.end(),
        [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; }, '?');
    return label;
}

void FrameLog::tell(std::size_t index, std::string label, std::string value)
{
    const std::lock_guard lock(m_mutex);
    m_waiting.insert_or_assign(index, Line{std::move(label), std::move(value)});
    for (auto line = m_waiting.find(m_next); line != m_waiting.end();
         line = m_waiting.find(m_next)) {
        print(line->second.label, line->second.value);
        m_waiting.erase(line);
        ++m_next;
    }
}

} // namespace dualiso
