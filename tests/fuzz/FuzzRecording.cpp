// Any bytes as a recording's file, and packed as its content, so that a fuzzer need not find the format by chance; what
// is read is played to a subscriber.
#include <zlib.h>

#include "FuzzEntry.h"
#include "FuzzFile.h"
#include "relay/ReplayPublisher.h"

namespace vmr::fuzz {
namespace {

std::string packed(std::string_view text) {
    z_stream stream{};
    deflateInit2(&stream, 1, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
    std::string out(deflateBound(&stream, text.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = reinterpret_cast<Bytef*>(out.data());
    stream.avail_out = static_cast<uInt>(out.size());
    deflate(&stream, Z_FINISH);
    out.resize(stream.total_out);
    deflateEnd(&stream);
    return out;
}

struct Silent final : relay::Subscriber {
    void send(const relay::Frame&) override {}
};

void play(std::string_view bytes) {
    const FuzzFile file(bytes);
    std::string error;
    auto reader = relay::RecordingReader::open(file.path(), error);
    require((reader != nullptr) == error.empty());
    if (!reader) return;
    require(relay::recordingStart(file.path(), error) == static_cast<double>(reader->peek()->timeMs) / 1000);
    relay::ChannelHub hub;
    hub.add(std::make_unique<relay::ReplayPublisher>(hub, std::move(reader)));
    Silent early, late;
    const std::vector<std::string> channels{"futures:NQM6", "futures:NQM6:1m", "futures:NQM6:trades",
                                            "derived:QQQ",  "derived:osc:QQQ", "derived:srlevels:NQ"};
    hub.subscribe(early, channels, 0);
    hub.tick(7'258'118'400'000);  // the end of its days
    hub.subscribe(late, channels, 7'258'118'400'000);
    hub.leave(early);
    hub.leave(late);
}
}  // namespace

void take(std::string_view text) {
    play(text);
    play(packed("velmora-recording 1\n" + std::string(text)));
}

}  // namespace vmr::fuzz
