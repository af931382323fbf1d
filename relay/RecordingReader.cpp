#include <zlib.h>

#include <array>
#include <fstream>

#include "base/Json.h"
#include "relay/Recording.h"

namespace vmr::relay {

namespace {
constexpr int gzipFormat = 15 + 16;
constexpr std::string_view title = "velmora-recording 1\n";
constexpr std::size_t longestHead = 1 << 16;
constexpr std::int64_t longestFrame = std::int64_t{1} << 30;
constexpr std::int64_t latestMs = 7258118400000;  // 2200-01-01
}  // namespace

struct RecordingReader::Impl {
    std::ifstream in;
    z_stream stream{};
    std::string plain;  // inflated bytes; those from `begin` on are still to be read
    std::size_t begin = 0;
    bool over = false;  // the stream has ended or is damaged: nothing more can be read
    std::optional<RecordedFrame> next;

    ~Impl() { inflateEnd(&stream); }

    std::string_view rest() const { return std::string_view(plain).substr(begin); }

    /// Inflates some more of the file; false where it ends for now.
    bool fill() {
        if (over) return false;
        std::array<char, 65536> packed;
        in.clear();  // an earlier end of the file: it may have grown since
        in.read(packed.data(), static_cast<std::streamsize>(packed.size()));
        if (in.gcount() == 0) return false;
        plain.erase(0, begin);
        begin = 0;
        stream.next_in = reinterpret_cast<Bytef*>(packed.data());
        stream.avail_in = static_cast<uInt>(in.gcount());
        std::array<char, 262144> out;
        do {
            stream.next_out = reinterpret_cast<Bytef*>(out.data());
            stream.avail_out = static_cast<uInt>(out.size());
            const int result = inflate(&stream, Z_NO_FLUSH);
            plain.append(out.data(), out.size() - stream.avail_out);
            over = result != Z_OK && result != Z_BUF_ERROR;
        } while (!over && stream.avail_out == 0);
        return true;
    }

    /// Inflates until that many bytes are there; false when the file ends before.
    bool need(std::size_t bytes) {
        while (rest().size() < bytes) {
            if (!fill()) return false;
        }
        return true;
    }

    bool readTitle() {
        if (!need(title.size()) || !rest().starts_with(title)) return false;
        begin += title.size();
        return true;
    }

    bool readFrame() {
        std::size_t end = rest().find('\n');
        while (end == std::string_view::npos && rest().size() < longestHead && fill()) end = rest().find('\n');
        if (end == std::string_view::npos) return false;
        const auto head = Json::parse(rest().substr(0, end));
        const auto number = [&](const char* key, std::int64_t most) -> std::optional<std::int64_t> {
            if (!head || (*head)[key].kind() != JsonView::Kind::integer) return std::nullopt;
            const std::int64_t value = (*head)[key].integer();
            return value >= 0 && value <= most ? std::optional(value) : std::nullopt;
        };
        const auto time = number("t", latestMs);
        const auto length = number("n", longestFrame);
        if (!time || !length || !(*head)["c"].isString()) {
            over = true;
            plain.clear();
            begin = 0;
            return false;
        }
        const auto bytes = static_cast<std::size_t>(*length);
        if (!need(end + 1 + bytes + 1)) return false;
        next = RecordedFrame{*time, std::string((*head)["c"].string()),
                             Frame(std::string(rest().substr(end + 1, bytes)), (*head)["b"].boolean())};
        begin += end + 1 + bytes + 1;
        return true;
    }
};

RecordingReader::RecordingReader(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}
RecordingReader::~RecordingReader() = default;

std::unique_ptr<RecordingReader> RecordingReader::open(const std::filesystem::path& file, std::string& error) {
    auto impl = std::make_unique<Impl>();
    std::error_code ignored;
    if (!std::filesystem::is_directory(file, ignored)) impl->in.open(file, std::ios::binary);
    if (!impl->in.is_open()) {
        error = "the recording " + file.string() + " cannot be opened";
        return nullptr;
    }
    if (inflateInit2(&impl->stream, gzipFormat) != Z_OK || !impl->readTitle()) {
        error = "the file " + file.string() + " is no recording of a relay";
        return nullptr;
    }
    if (!impl->readFrame()) {
        error = "the recording " + file.string() + " holds no frame";
        return nullptr;
    }
    return std::unique_ptr<RecordingReader>(new RecordingReader(std::move(impl)));
}

const RecordedFrame* RecordingReader::peek() {
    if (!impl_->next) impl_->readFrame();
    return impl_->next ? &*impl_->next : nullptr;
}

void RecordingReader::pop() { impl_->next.reset(); }

void RecordingReader::rewind() {
    impl_->in.clear();
    impl_->in.seekg(0);
    inflateReset(&impl_->stream);
    impl_->plain.clear();
    impl_->begin = 0;
    impl_->next.reset();
    impl_->over = false;
    impl_->over = !impl_->readTitle();
}

std::optional<double> recordingStart(const std::filesystem::path& file, std::string& error) {
    const auto reader = RecordingReader::open(file, error);
    if (!reader) return std::nullopt;
    return static_cast<double>(reader->peek()->timeMs) / 1000;
}

}  // namespace vmr::relay
