#include <zlib.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>

#include "relay/Payloads.h"
#include "relay/Recording.h"

namespace vmr::relay {

namespace {
constexpr int gzipFormat = 15 + 16;
constexpr int quickLevel = 2;
constexpr int memoryLevel = 8;
}  // namespace

struct RecordingWriter::Impl {
    std::filesystem::path file;
    std::ofstream out;
    z_stream stream{};
    std::optional<std::string> problem;
    bool unflushed = false;

    void deflateAll(std::string_view bytes, int mode) {
        if (problem) return;
        std::array<char, 65536> packed;
        stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
        stream.avail_in = static_cast<uInt>(bytes.size());
        do {
            stream.next_out = reinterpret_cast<Bytef*>(packed.data());
            stream.avail_out = static_cast<uInt>(packed.size());
            deflate(&stream, mode);
            out.write(packed.data(), static_cast<std::streamsize>(packed.size() - stream.avail_out));
        } while (stream.avail_out == 0);
        if (mode != Z_NO_FLUSH) out.flush();
        if (!out) problem = "the recording " + file.string() + " cannot be written: " + std::strerror(errno);
    }
};

RecordingWriter::RecordingWriter(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}

std::unique_ptr<RecordingWriter> RecordingWriter::create(const std::filesystem::path& file, std::string& error) {
    auto impl = std::make_unique<Impl>();
    impl->file = file;
    impl->out.open(file, std::ios::binary | std::ios::trunc);
    if (!impl->out ||
        deflateInit2(&impl->stream, quickLevel, Z_DEFLATED, gzipFormat, memoryLevel, Z_DEFAULT_STRATEGY) != Z_OK) {
        error = "the recording " + file.string() + " cannot be written: " + std::strerror(errno);
        return nullptr;
    }
    std::unique_ptr<RecordingWriter> writer(new RecordingWriter(std::move(impl)));
    writer->impl_->deflateAll("velmora-recording 1\n", Z_SYNC_FLUSH);
    if (!writer->problem()) return writer;
    error = *writer->problem();
    return nullptr;
}

RecordingWriter::~RecordingWriter() {
    impl_->deflateAll({}, Z_FINISH);
    deflateEnd(&impl_->stream);
}

void RecordingWriter::write(std::int64_t timeMs, const std::string& channel, const Frame& frame) {
    std::string head = R"({"t":)" + std::to_string(timeMs) + R"(,"n":)" + std::to_string(frame.bytes->size());
    if (frame.binary) head += R"(,"b":true)";
    impl_->deflateAll(head + R"(,"c":)" + payload::quoted(channel) + "}\n", Z_NO_FLUSH);
    impl_->deflateAll(*frame.bytes, Z_NO_FLUSH);
    impl_->deflateAll("\n", Z_NO_FLUSH);
    impl_->unflushed = true;
}

void RecordingWriter::flush() {
    if (!impl_->unflushed) return;
    impl_->unflushed = false;
    impl_->deflateAll({}, Z_SYNC_FLUSH);
}

const std::optional<std::string>& RecordingWriter::problem() const { return impl_->problem; }

}  // namespace vmr::relay
