// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/chunk.h"
#include "mlv/recordingindex.h"
#include "mlv/timeline.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace mlv {

/// A recording of one or more chunks, with an index of its blocks. Nothing in it changes after the
/// opening, so that any number of threads may use it at once.
class Recording
{
public:
    /// Opens the file and, when its extension is "mlv" in any case, the chunks that continue it.
    /// Throws raw::Error when the first file is no MLV recording.
    explicit Recording(const std::filesystem::path &path);
    /// Opens it by what index() told when it was opened before. It then has no sound, and of
    /// warnings and remarks those alone that its files give. Throws raw::Error as above, or
    /// ForeignIndex.
    Recording(const std::filesystem::path &path, RecordingIndex index);

    RecordingIndex index() const;

    const std::vector<Chunk> &chunks() const { return m_chunks; }
    /// The first chunk's.
    const FileHeader &header() const { return m_chunks.front().header(); }
    /// 0 when the recording gives none.
    double framesPerSecond() const { return mlv::framesPerSecond(header()); }

    /// The frames that lie whole in the recording. Of frames that carry the same number the last
    /// one counts.
    const DataIndex &videoFrames() const { return m_video; }
    const DataIndex &audioBlocks() const { return m_audio; }

    const std::optional<RawInfo> &rawInfo() const { return m_rawInfo; }
    /// Whether frames of another size or depth follow in the same recording.
    bool changesFormat() const { return m_changesFormat; }
    const std::optional<RawCapture> &rawCapture() const { return m_rawCapture; }
    const std::optional<WaveInfo> &waveInfo() const { return m_waveInfo; }
    const std::optional<Identity> &identity() const { return m_identity; }
    /// The first text that the user or the recorder left, as it stands, at most 1000 bytes.
    const std::string &info() const { return m_info; }
    const Timeline<Clock> &clock() const { return m_clock; }
    const Timeline<Exposure> &exposure() const { return m_exposure; }
    const Timeline<Lens> &lens() const { return m_lens; }
    const Timeline<WhiteBalance> &whiteBalance() const { return m_whiteBalance; }

    /// Fills `bytes` with the first bytes of a block's data, at most block.size.
    void read(const DataBlock &block, std::span<std::byte> bytes) const;

    /// What of the recording is lost or left out: one sentence a line, naming no
    /// path.
    const std::vector<std::string> &warnings() const { return m_warnings; }
    /// What is unusual about it, although nothing is lost, likewise.
    const std::vector<std::string> &remarks() const { return m_remarks; }

private:
    void openContinuations(const std::filesystem::path &path);
    bool openContinuation(const std::filesystem::path &path);
    void scan(std::uint16_t chunk);
    void visit(BlockWalk &walk, const Block &block, std::uint16_t chunk);
    bool takeSettings(BlockWalk &walk, const Block &block, std::uint16_t chunk);
    bool readInfo(const Block &block, std::uint16_t chunk);
    bool addRawInfo(const RawInfo &rawInfo);
    template <typename Layout>
    void addData(BlockWalk &walk, const Block &block, std::uint16_t chunk, DataIndex &index);
    void dropShortFrames();
    void finishIndex();
    void warnOfEnd(const BlockWalk &walk, std::uint16_t chunk);
    void warnOfLosses(std::size_t repeatedFrames, std::size_t repeatedSounds);

    std::vector<Chunk> m_chunks;
    DataIndex m_video;
    DataIndex m_audio;
    std::vector<SettingsBlock> m_settings; ///< those that what follows was taken from
    std::optional<RawInfo> m_rawInfo;
    bool m_changesFormat = false;
    bool m_expectsOther = false;                ///< the last RAWI block isn't as the first one
    std::optional<std::uint32_t> m_otherNumber; ///< of the first frame behind such a block
    std::optional<RawCapture> m_rawCapture;
    std::optional<WaveInfo> m_waveInfo;
    std::optional<Identity> m_identity;
    std::string m_info;
    Timeline<Clock> m_clock;
    Timeline<Exposure> m_exposure;
    Timeline<Lens> m_lens;
    Timeline<WhiteBalance> m_whiteBalance;
    std::size_t m_damagedBlocks = 0;
    std::vector<std::string> m_warnings;
    std::vector<std::string> m_remarks;
};

} // namespace mlv
