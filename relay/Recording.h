// A file of everything that a relay sent, with the times.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "relay/Publisher.h"

namespace vmr::relay {

/// One message of one channel.
struct RecordedFrame {
    std::int64_t timeMs = 0;  ///< market time
    std::string channel;
    Frame frame;
};

/// Writes a recording; docs/recordings.md tells its form. One thread.
class RecordingWriter {
 public:
    /// Replaces the file. Nothing and what is wrong in `error` when that fails.
    static std::unique_ptr<RecordingWriter> create(const std::filesystem::path& file, std::string& error);
    ~RecordingWriter();

    void write(std::int64_t timeMs, const std::string& channel, const Frame& frame);

    /// Brings all that has been written so far into the file, where it can be read.
    void flush();

    /// What went wrong, such as a full disk; nothing is written after that.
    const std::optional<std::string>& problem() const;

 private:
    struct Impl;
    explicit RecordingWriter(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> impl_;
};

/// Reads a recording frame by frame, also one that is still being written. One thread.
class RecordingReader {
 public:
    /// Nothing and what is wrong in `error` for a file that cannot be read, is no recording or holds no frame.
    static std::unique_ptr<RecordingReader> open(const std::filesystem::path& file, std::string& error);
    ~RecordingReader();

    /// The next frame; nothing where the file ends or is damaged. At the end of a file that has grown since, a later
    /// call goes on.
    const RecordedFrame* peek();
    /// Leaves the frame that `peek` gave.
    void pop();
    /// Goes back to the first frame.
    void rewind();

 private:
    struct Impl;
    explicit RecordingReader(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> impl_;
};

/// When a recording's first frame was sent, in seconds since 1970; nothing and what is wrong in `error` otherwise.
std::optional<double> recordingStart(const std::filesystem::path& file, std::string& error);

}  // namespace vmr::relay
