// One open recording: whether it is the recorder's, and its decoded export.
#pragma once

#include "export/BextChunkInfo.h"
#include "export/BwfWriter.h"
#include "recording/WavArray.h"
#include "recording/WaveFileReader.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <utility>

namespace deckmate {

/// Loads a recording on creation and keeps its reader, which the player and the meters share.
/// An export reads on several threads and leaves the reader's position alone, but nothing may
/// change the reader meanwhile.
///
///     Export recording("take.wav");
///     if (recording.IsFileValid()) {
///         recording.setAngle(120);
///         recording.setGain(3.0);
///         const bool isSaved = recording.export2File("take_Decode.WAV", true, false);
///     }
///
/// For one thread at a time; different recordings may be exported on different threads.
class Export {
public:
    /// Frames done and frames to do, over all readings of an export; called on the exporting thread
    /// up to some hundred times for an hour of sound, the last time with both equal. Must not
    /// throw.
    using Progress = std::function<void(std::uint64_t done, std::uint64_t total)>;

    /// Reads the whole file; one that can't be read makes an invalid recording.
    explicit Export(const std::filesystem::path& path);
    /// For bytes that are in memory already; `path` is where they came from. Throws std::bad_alloc
    /// when there is no memory for their index.
    Export(const std::filesystem::path& path, WavArray&& bytes);

    /// Takes over the bytes. Only a WAV file whose `bext` originator contains "ORLO H8" is valid;
    /// "MSRAW=ON" in its coding history marks raw mid/side. Throws std::bad_alloc as above.
    bool checkFileValid(WavArray&& bytes);
    bool IsFileValid() const { return isFileValid_; }

    /// The output's fields: the source's texts, a new date and a coding history of its own.
    BextChunkInfo buildBextInfo() const;
    bool export2File(const std::filesystem::path& path, bool Is24bit, bool IsNormalize);
    /// With the format and normalisation set before. NO, with nothing written, also when 32-bit
    /// sizes can't hold the output or memory runs out. Writing overlaps with decoding.
    bool export2File(const std::filesystem::path& path);
    /// Decodes every frame into the writer, which takes nothing more where it can't hold them all.
    void editAndWriteSample(BwfWriter& writer);
    /// Frees the file's bytes; the recording is invalid from then on.
    void cleanUp();

    const std::filesystem::path& getDirPath() const { return dirPath_; }
    void setDirPath(const std::filesystem::path& dirPath) { dirPath_ = dirPath; }
    const std::filesystem::path& getFilePath() const { return filePath_; }

    const std::filesystem::path& filePath() const { return filePath_; }
    void setFilePath(const std::filesystem::path& filePath) { filePath_ = filePath; }
    bool isExport24Bit() const { return isExport24Bit_; }
    /// Scale to a peak of full scale instead of applying the gain.
    bool normalize() const { return normalize_; }
    void setNormalize(bool normalize) { normalize_ = normalize; }
    /// Decibels, positive is louder.
    double gain() const { return gain_; }
    void setGain(double gain) { gain_ = gain; }
    /// Stereo width 0..150, cut to a whole index when used.
    double angle() const { return angle_; }
    void setAngle(double angle) { angle_ = angle; }
    const std::shared_ptr<WaveFileReader>& reader() const { return reader_; }
    /// Not null.
    void setReader(std::shared_ptr<WaveFileReader> reader) { reader_ = std::move(reader); }
    /// Whether an export may write over a file that exists (yes, unless told otherwise). The
    /// recording's own file is never written to.
    void setMayOverwrite(bool mayOverwrite) { mayOverwrite_ = mayOverwrite; }
    void setProgress(Progress progress) { progress_ = std::move(progress); }

private:
    class Pass;

    static float peak(Pass& pass);

    WavArray bextChunk_;
    std::filesystem::path dirPath_;
    bool isFileValid_ = false;
    bool isExport24Bit_ = false;
    bool normalize_ = false;
    double gain_ = 0;
    double angle_ = 0;
    bool mayOverwrite_ = true;
    std::filesystem::path filePath_;
    std::shared_ptr<WaveFileReader> reader_;
    Progress progress_;
};

} // namespace deckmate
