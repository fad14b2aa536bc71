// Received bytes to events, against protobuf's own delimited reader.
#include "Common/Protobuf/Object/Object.pb.h"
#include "network/Framing.h"
#include "network/MessageSerializer.h"
#include "network/Messages.h"
#include "network/NetworkEvent.h"

#include <benchmark/benchmark.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/util/delimited_message_util.h>
#include <boost/make_shared.hpp>

#include <algorithm>
#include <memory>
#include <string>

namespace {

using EventList = std::list<boost::shared_ptr<NetworkEvent>>;

/// The same messages in both framings. Every fourth is a ship's full state, the others are updates.
struct Traffic
{
    std::string frames;
    std::string delimited;  ///< protobuf's framing, which carries no types

    explicit Traffic(std::uint64_t count)
    {
        messages::ShipState ship;
        ship.name = "Wing Commander";
        for (std::uint64_t i = 0; i < count; ++i) {
            ship.id = i + 1;
            const Vector3 position(1.5F * static_cast<float>(i), -200.25F, 3000.0F);
            frames += i % 4 == 0 ? messages::infoFrame(ship) : messages::updateFrame(ship.id, 1000, position);
        }
        google::protobuf::io::StringOutputStream out(&delimited);
        std::string leftover;
        for (const auto& event :
             MessageSerializer::deserializeMessageArray(frames.data(), frames.size(), &leftover)) {
            google::protobuf::util::SerializeDelimitedToZeroCopyStream(*event->message, &out);
        }
    }
};

/// As a socket delivers it: in runs of at most `runSize` bytes. As in the client, one `leftover` serves all.
EventList readFrames(const Traffic& traffic, std::size_t runSize, std::string& leftover)
{
    EventList events;
    for (std::size_t at = 0; at < traffic.frames.size(); at += runSize) {
        const std::size_t size = std::min(runSize, traffic.frames.size() - at);
        events.splice(events.end(), MessageSerializer::deserializeMessageArray(traffic.frames.data() + at,
                                                                               size, &leftover));
    }
    return events;
}

EventList readDelimited(const Traffic& traffic)
{
    google::protobuf::io::ArrayInputStream in(traffic.delimited.data(),
                                              static_cast<int>(traffic.delimited.size()));
    EventList events;
    for (bool more = true; more;) {
        std::unique_ptr<google::protobuf::Message> message;
        if (events.size() % 4 == 0) {
            message = std::make_unique<Vantor::ObjectInfo>();
        } else {
            message = std::make_unique<Vantor::ObjectUpdate>();
        }
        more = google::protobuf::util::ParseDelimitedFromZeroCopyStream(message.get(), &in, nullptr);
        if (more) {
            events.push_back(boost::make_shared<NetworkEvent>());
            events.back()->message = message.release();
        }
    }
    return events;
}

template <class Read>
void measure(benchmark::State& state, Read read)
{
    const Traffic traffic(static_cast<std::uint64_t>(state.range(0)));
    if (read(traffic).size() != static_cast<std::size_t>(state.range(0))) {
        state.SkipWithError("not every message was read");
    }
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(read(traffic));
    }
}

void ours(benchmark::State& state)
{
    measure(state, [leftover = std::string()](const Traffic& traffic) mutable {
        return readFrames(traffic, traffic.frames.size(), leftover);
    });
}
void buffers(benchmark::State& state)
{
    measure(state, [leftover = std::string()](const Traffic& traffic) mutable {
        return readFrames(traffic, 2048, leftover);
    });
}
void delimited(benchmark::State& state)
{
    measure(state, readDelimited);
}

BENCHMARK(ours)->Name("framing/ours")->Arg(1)->Arg(20)->Arg(1000);
BENCHMARK(buffers)->Name("framing/buffers")->Arg(1000);
BENCHMARK(delimited)->Name("framing/delimited")->Arg(1)->Arg(20)->Arg(1000);

}  // namespace
