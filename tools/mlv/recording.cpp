// SPDX-License-Identifier: MIT
#include "mlv/recording.h"

#include "mlv/frameformat.h"
#include "raw/error.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <set>

namespace mlv {
namespace {

bool isMlvExtension(const std::string &extension)
{
    return extension.size() == 4 &&
           std::equal(extension.begin(), extension.end(), ".mlv", [](char a, char b) {
               return std::tolower(static_cast<unsigned char>(a)) == b;
           });
}

/// Two digits, as continuations carry them.
std::string continuationDigits(int counter)
{
    return std::to_string(100 + counter).substr(1);
}

/// The counter of a continuation's extension, ".M00" to ".M99" in any letter case; -1 for others.
int continuationCounter(const std::string &extension)
{
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    const bool isOne = extension.size() == 4 && extension[0] == '.' &&
                       (extension[1] == 'm' || extension[1] == 'M') && isDigit(extension[2]) &&
                       isDigit(extension[3]);
    return isOne ? (extension[2] - '0') * 10 + extension[3] - '0' : -1;
}

/// The files that have the name of a continuation of `first`, by counter. Cameras spell them as the
/// first file; systems that copy them don't always.
std::set<std::pair<int, std::filesystem::path>> continuations(const std::filesystem::path &first,
                                                              std::error_code &error)
{
    std::set<std::pair<int, std::filesystem::path>> found;
    const auto folder = first.has_parent_path() ? first.parent_path() : std::filesystem::path(".");
    for (std::filesystem::directory_iterator entry(folder, error), end; entry != end;
         entry.increment(error)) {
        const auto &path = entry->path();
        const int counter = continuationCounter(path.extension().string());
        if (counter >= 0 && path.stem() == first.stem())
            found.emplace(counter, path);
    }
    return found;
}

/// Sorts by number and keeps the last block of each number. Answers how many were left out.
std::size_t sortByNumber(DataIndex &index)
{
    std::stable_sort(index.begin(), index.end(),
                     [](const DataBlock &a, const DataBlock &b) { return a.number < b.number; });
    const std::size_t before = index.size();
    const auto kept =
        std::unique(index.rbegin(), index.rend(),
                    [](const DataBlock &a, const DataBlock &b) { return a.number == b.number; });
    index.erase(index.begin(), kept.base());
    return before - index.size();
}

bool isSameShape(const RawInfo &a, const RawInfo &b)
{
    return a.width == b.width && a.height == b.height && a.bitsPerSample == b.bitsPerSample;
}

bool hasSameLevels(const RawInfo &a, const RawInfo &b)
{
    return a.blackLevel == b.blackLevel && a.whiteLevel == b.whiteLevel &&
           a.colourMatrix == b.colourMatrix;
}

template <typename Layout>
bool keepFirst(std::optional<Layout> &kept, const Layout &layout)
{
    const bool isFirst = !kept;
    kept = kept.value_or(layout);
    return isFirst;
}

std::vector<FileMark> marksOf(const std::vector<Chunk> &chunks)
{
    std::vector<FileMark> marks;
    std::ranges::transform(chunks, std::back_inserter(marks), [](const Chunk &chunk) {
        return FileMark{chunk.file().size(), chunk.file().modified()};
    });
    return marks;
}

bool liesIn(const DataBlock &block, const std::vector<Chunk> &chunks)
{
    return block.chunk < chunks.size() && block.size <= maxBlockSize &&
           block.size <= chunks[block.chunk].file().size() &&
           block.offset <= chunks[block.chunk].file().size() - block.size;
}

} // namespace

Recording::Recording(const std::filesystem::path &path)
{
    m_chunks.emplace_back(path);
    openContinuations(path);
    for (std::size_t chunk = 0; chunk < m_chunks.size(); ++chunk)
        scan(static_cast<std::uint16_t>(chunk));
    finishIndex();
}

Recording::Recording(const std::filesystem::path &path, RecordingIndex index)
    : m_video(std::move(index.videoFrames))
{
    m_chunks.emplace_back(path);
    openContinuations(path);
    if (index.guid != header().guid || index.chunks != marksOf(m_chunks))
        throw ForeignIndex("is of another recording");
    for (const auto &place : index.settings) {
        if (place.chunk >= m_chunks.size())
            throw ForeignIndex("is damaged");
        BlockWalk walk(m_chunks[place.chunk], place.offset);
        if (const auto block = walk.next())
            takeSettings(walk, *block, place.chunk);
    }
    if (!std::ranges::all_of(m_video,
                             [this](const auto &block) { return liesIn(block, m_chunks); }))
        throw ForeignIndex("is damaged");
    finishIndex();
}

RecordingIndex Recording::index() const
{
    return {header().guid, marksOf(m_chunks), m_settings, m_video};
}

void Recording::openContinuations(const std::filesystem::path &path)
{
    const std::string extension = path.extension().string();
    if (!isMlvExtension(extension))
        return;
    std::set<int> met;
    int last = -1;
    std::error_code error;
    for (const auto &[counter, file] : continuations(path, error)) {
        met.insert(counter);
        if (openContinuation(file))
            last = counter;
    }
    if (error) {
        m_warnings.push_back("its folder can't be listed (" + error.message() +
                             "): further files of the recording are not found");
    }
    // Where the header gives no number of chunks, only a later one tells that another is missing.
    for (int counter = 0; counter < last; ++counter) {
        if (!met.contains(counter)) {
            m_warnings.push_back("the file with the extension " + extension.substr(0, 2) +
                                 continuationDigits(counter) +
                                 " is missing, and with it its part of the recording");
        }
    }
    if (m_chunks.size() < header().chunkCount) {
        m_warnings.push_back("of the " + std::to_string(header().chunkCount) +
                             " chunks of the recording only " + std::to_string(m_chunks.size()) +
                             " could be read");
    }
}

/// Answers whether the file belongs to the recording.
bool Recording::openContinuation(const std::filesystem::path &path)
{
    const std::string name = path.extension().string();
    try {
        Chunk chunk(path);
        if (chunk.header().guid == header().guid) {
            m_chunks.push_back(std::move(chunk));
            return true;
        }
        m_warnings.push_back("the file with the extension " + name +
                             " belongs to another recording and is not read");
    } catch (const raw::Error &error) {
        m_warnings.push_back("the file with the extension " + name + " is not read: it " +
                             error.what());
    }
    return false;
}

void Recording::read(const DataBlock &block, std::span<std::byte> bytes) const
{
    m_chunks[block.chunk].file().read(block.offset, bytes);
}

void Recording::scan(std::uint16_t chunk)
{
    BlockWalk walk(m_chunks[chunk]);
    while (const auto block = walk.next())
        visit(walk, *block, chunk);
    warnOfEnd(walk, chunk);
}

void Recording::visit(BlockWalk &walk, const Block &block, std::uint16_t chunk)
{
    const auto &type = block.header.type;
    if (type == blocktype::videoFrame)
        addData<VideoFrame>(walk, block, chunk, m_video);
    else if (type == blocktype::audioFrame)
        addData<AudioFrame>(walk, block, chunk, m_audio);
    else if (takeSettings(walk, block, chunk))
        m_settings.push_back({block.offset, chunk});
}

/// Answers whether anything was taken.
bool Recording::takeSettings(BlockWalk &walk, const Block &block, std::uint16_t chunk)
{
    const auto &type = block.header.type;
    const auto timestamp = block.header.timestamp;
    if (type == blocktype::rawInfo)
        return addRawInfo(walk.layout<RawInfo>());
    if (type == blocktype::rawCapture)
        return keepFirst(m_rawCapture, walk.layout<RawCapture>());
    if (type == blocktype::waveInfo)
        return keepFirst(m_waveInfo, walk.layout<WaveInfo>());
    if (type == blocktype::identity)
        return keepFirst(m_identity, walk.layout<Identity>());
    if (type == blocktype::info)
        return m_info.empty() && readInfo(block, chunk);
    if (type == blocktype::clock)
        return m_clock.add(timestamp, walk.layout<Clock>());
    if (type == blocktype::exposure)
        return m_exposure.add(timestamp, walk.layout<Exposure>());
    if (type == blocktype::lens)
        return m_lens.add(timestamp, walk.layout<Lens>());
    if (type == blocktype::whiteBalance)
        return m_whiteBalance.add(timestamp, walk.layout<WhiteBalance>());
    return false;
}

bool Recording::readInfo(const Block &block, std::uint16_t chunk)
{
    constexpr std::size_t maxInfo = 1000;
    m_info.resize(std::min<std::size_t>(block.header.size - sizeof(BlockHeader), maxInfo));
    m_chunks[chunk].file().read(block.offset + sizeof(BlockHeader),
                                std::as_writable_bytes(std::span(m_info)));
    return !m_info.empty();
}

bool Recording::addRawInfo(const RawInfo &rawInfo)
{
    const bool isFirst = keepFirst(m_rawInfo, rawInfo);
    m_changesFormat = m_changesFormat || !isSameShape(*m_rawInfo, rawInfo);
    m_expectsOther = !hasSameLevels(*m_rawInfo, rawInfo);
    return isFirst;
}

template <typename Layout>
void Recording::addData(BlockWalk &walk, const Block &block, std::uint16_t chunk, DataIndex &index)
{
    constexpr std::uint32_t headSize = sizeof(BlockHeader) + sizeof(Layout);
    const auto layout = walk.layout<Layout>();
    if (block.header.size < headSize || layout.frameSpace > block.header.size - headSize) {
        ++m_damagedBlocks;
        return;
    }
    const std::uint32_t head = headSize + layout.frameSpace;
    index.push_back({block.offset + head, block.header.timestamp, block.header.size - head,
                     layout.number, chunk});
    if constexpr (std::is_same_v<Layout, VideoFrame>) {
        index.back().cropX = layout.cropX;
        index.back().cropY = layout.cropY;
        if (m_expectsOther)
            m_otherNumber = std::min(m_otherNumber.value_or(layout.number), layout.number);
    }
}

void Recording::finishIndex()
{
    dropShortFrames();
    m_clock.sort();
    m_exposure.sort();
    m_lens.sort();
    m_whiteBalance.sort();
    const std::size_t repeatedFrames = sortByNumber(m_video);
    const std::size_t repeatedSounds = sortByNumber(m_audio);
    warnOfLosses(repeatedFrames, repeatedSounds);
}

void Recording::dropShortFrames()
{
    const bool compressed =
        (header().videoClass & (videoclass::losslessJpeg | videoclass::lzma)) != 0;
    if (compressed || !m_rawInfo || m_changesFormat ||
        !raw::isSupportedDepth(m_rawInfo->bitsPerSample))
        return;
    const auto frameSize = raw::packedSize(std::size_t{m_rawInfo->width} * m_rawInfo->height,
                                           m_rawInfo->bitsPerSample);
    m_damagedBlocks += std::erase_if(
        m_video, [frameSize](const DataBlock &block) { return block.size < frameSize; });
}

void Recording::warnOfEnd(const BlockWalk &walk, std::uint16_t chunk)
{
    const std::string name = "chunk " + std::to_string(chunk + 1) + " of the recording";
    const std::string rest =
        std::to_string(m_chunks[chunk].file().size() - walk.position()) + " bytes";
    if (walk.end() == BlockWalk::End::CutOff) {
        m_warnings.push_back(name + " is cut off: its last " + rest + " are no whole block");
    } else if (walk.end() == BlockWalk::End::Damaged) {
        m_warnings.push_back(name + " is damaged at byte " + std::to_string(walk.position()) +
                             ": the " + rest + " from there on are not read");
    }
    if (walk.repaired())
        m_remarks.push_back(name + " has filler blocks without a size, which were stepped over");
}

void Recording::warnOfLosses(std::size_t repeatedFrames, std::size_t repeatedSounds)
{
    if (m_damagedBlocks > 0) {
        m_warnings.push_back(std::to_string(m_damagedBlocks) +
                             " damaged frame or sound blocks are left out");
    }
    if (m_otherNumber && !m_changesFormat && !m_video.empty()) {
        // Numbered as the frames are when they are written.
        const auto frame = *m_otherNumber - std::min(*m_otherNumber, m_video.front().number);
        m_warnings.push_back("from frame " + std::to_string(frame) +
                             " on other levels or colours are recorded; the first ones hold");
    }
    if (repeatedFrames > 0) {
        m_warnings.push_back(std::to_string(repeatedFrames) +
                             " frames have the number of a later one and are left out");
    }
    if (repeatedSounds > 0) {
        m_warnings.push_back(std::to_string(repeatedSounds) +
                             " sound blocks have the number of a later one and are left out");
    }
}

} // namespace mlv
