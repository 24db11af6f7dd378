// SPDX-License-Identifier: MIT
#include "mlv_sample/chunkwriter.h"

#include <cerrno>
#include <system_error>
#include <utility>
#include <vector>

namespace sample {

ChunkWriter::ChunkWriter(std::string path, const mlv::FileHeader &header)
    : m_path(std::move(path))
    , m_file(m_path, std::ios::binary | std::ios::trunc)
{
    check();
    writeBytes(mlv::encodeLayout(header));
}

void ChunkWriter::write(mlv::BlockType type, std::uint64_t timestamp,
                        std::initializer_list<std::span<const std::byte>> parts)
{
    std::size_t size = sizeof(mlv::BlockHeader);
    for (const auto &part : parts)
        size += part.size();
    const mlv::BlockHeader header{type, static_cast<std::uint32_t>(size), timestamp};
    writeBytes(mlv::encodeLayout(header));
    for (const auto &part : parts)
        writeBytes(part);
}

void ChunkWriter::fillTo(std::uint64_t boundary)
{
    std::uint64_t missing = boundary - m_position % boundary;
    if (missing < sizeof(mlv::BlockHeader))
        missing += boundary;
    const std::vector<std::byte> padding(missing - sizeof(mlv::BlockHeader), std::byte{0xa5});
    write(mlv::blocktype::filler, 0, {padding});
}

void ChunkWriter::close(const mlv::FileHeader &header)
{
    m_file.seekp(0);
    writeBytes(mlv::encodeLayout(header));
    m_file.close();
    check();
}

void ChunkWriter::writeBytes(std::span<const std::byte> bytes)
{
    m_file.write(reinterpret_cast<const char *>(bytes.data()),
                 static_cast<std::streamsize>(bytes.size()));
    check();
    m_position += bytes.size();
}

void ChunkWriter::check() const
{
    if (!m_file)
        throw std::system_error(errno, std::generic_category(), m_path);
}

} // namespace sample
