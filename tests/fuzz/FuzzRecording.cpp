// Any bytes as a recording's file, and packed as its content, so that a fuzzer need not find the format by chance; what
// is read is played to a subscriber.
#include <zlib.h>

#include "FuzzEntry.h"
#include "FuzzFile.h"
#include "relay/ReplayPublisher.h"

namespace vmr::fuzz {
namespace {

void pack(const std::filesystem::path& path, const std::string& text) {
    const gzFile out = gzopen(path.string().c_str(), "wb1");
    gzwrite(out, text.data(), static_cast<unsigned>(text.size()));
    gzclose(out);
}

struct Silent final : relay::Subscriber {
    void send(const relay::Frame&) override {}
};

void play(const FuzzFile& file) {
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
    const FuzzFile file(text);
    play(file);
    pack(file.path(), "velmora-recording 1\n" + std::string(text));
    play(file);
}

}  // namespace vmr::fuzz
