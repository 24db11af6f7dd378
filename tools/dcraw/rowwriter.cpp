// SPDX-License-Identifier: MIT
#include "dcraw/rowwriter.h"

namespace dcraw {
namespace {

constexpr std::size_t rowsWrittenAtOnce = 48; // some hundred kilobytes

} // namespace

RowWriter::RowWriter(const Development &development, const PixelPacker &packer, PixelSink &sink)
    : m_packer(packer)
    , m_sink(sink)
    , m_width(development.pictureWidth())
    , m_rowBytes(development.outputRowBytes())
    , m_waiting(rowsWrittenAtOnce * m_rowBytes)
{
    if (development.pixelAspect > 1) {
        m_stretch.emplace(development.outputWidth(), 1 / development.pixelAspect);
        m_stretched.emplace(development.outputWidth(), 1);
    }
}

void RowWriter::write(int y, const Picture &picture, int from)
{
    const int waiting = static_cast<int>(m_waitingBytes / m_rowBytes);
    if (y != m_first + waiting || m_waitingBytes == m_waiting.size()) {
        flush();
        m_first = y;
    }
    if (m_stretch)
        stretchColumns(picture, from);
    const Picture &source = m_stretch ? *m_stretched : picture;
    const int row = m_stretch ? 0 : from;
    m_packer.pack(source.row(0, row), source.row(1, row), source.row(2, row),
                  static_cast<std::size_t>(source.width()), &m_waiting[m_waitingBytes]);
    m_waitingBytes += m_rowBytes;
}

void RowWriter::stretchColumns(const Picture &picture, int from)
{
    for (int colour = 0; colour < 3; ++colour) {
        const std::uint16_t *values = picture.row(colour, from);
        std::uint16_t *result = m_stretched->row(colour, 0);
        for (int x = 0; x < m_stretch->count(); ++x) {
            const auto [index, part] = (*m_stretch)[x];
            const int next = std::min(index + 1, m_width - 1);
            result[x] = Stretch::between(values[index], values[next], part);
        }
    }
}

void RowWriter::flush()
{
    if (m_waitingBytes > 0 && m_isWanted)
        m_isWanted = m_sink.write(m_first, {m_waiting.data(), m_waitingBytes});
    m_waitingBytes = 0;
}

} // namespace dcraw
