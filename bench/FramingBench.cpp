// Received bytes to events, against the floor of the same job and against protobuf's own delimited reader.
#include "Common/Protobuf/Object/Object.pb.h"
#include "network/MessageSerializer.h"
#include "network/NetworkEvent.h"

#include <benchmark/benchmark.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/util/delimited_message_util.h>
#include <boost/make_shared.hpp>

#include <algorithm>
#include <memory>
#include <string_view>
#include <vector>

namespace {

using EventList = std::list<boost::shared_ptr<NetworkEvent>>;

struct Body
{
    MessageTypes::MessageType type;
    std::string_view bytes;
};

Vantor::ObjectUpdate updateOf(unsigned int i)
{
    Vantor::ObjectUpdate update;
    update.set_id(i + 1);
    update.set_timestamp(123456 + i);
    update.mutable_position()->set_x(1.5F * static_cast<float>(i));
    update.mutable_position()->set_y(-200.25F);
    update.mutable_position()->set_z(3000.0F);
    update.mutable_orientation()->set_x(0.5F);
    update.mutable_orientation()->set_y(0.5F);
    update.mutable_orientation()->set_z(-0.5F);
    update.mutable_orientation()->set_w(0.5F);
    return update;
}

Vantor::ObjectInfo infoOf(unsigned int i)
{
    const Vantor::ObjectUpdate pose = updateOf(i);
    Vantor::ObjectInfo info;
    info.set_id(pose.id());
    info.set_objecttype(0);
    info.set_timestamp(pose.timestamp());
    *info.mutable_position() = pose.position();
    *info.mutable_orientation() = pose.orientation();
    info.mutable_playerdata()->set_health(87.5F);
    info.mutable_playerdata()->set_blueteam(i % 8 == 0);
    info.mutable_playerdata()->set_name("Wing Commander " + std::to_string(i));
    info.mutable_playerdata()->set_score(static_cast<int>(i));
    info.mutable_playerdata()->set_redteamscore(12);
    info.mutable_playerdata()->set_blueteamscore(11);
    return info;
}

// The same messages in three forms. Every fourth is a player's full record, the others are updates.
class Traffic
{
public:
    explicit Traffic(unsigned int count)
    {
        for (unsigned int i = 0; i < count; ++i) {
            if (i % 4 == 0) {
                add(MessageTypes::OBJECT_INFO, infoOf(i));
            } else {
                add(MessageTypes::OBJECT_UPDATE, updateOf(i));
            }
        }
        cutBodies();
    }

    std::string frames;
    std::string delimited;     // protobuf's own framing, which carries no types
    std::vector<Body> bodies;  // views into `frames`

private:
    template <class Message>
    void add(MessageTypes::MessageType type, Message message)
    {
        frames += MessageSerializer::getSerializedMsg(type, message);
        google::protobuf::io::StringOutputStream out(&delimited);
        google::protobuf::util::SerializeDelimitedToZeroCopyStream(message, &out);
        bodies.push_back({type, {}});
        sizes.push_back(message.ByteSizeLong());
    }

    void cutBodies()
    {
        constexpr std::size_t headSize = 3;
        std::size_t offset = 0;
        for (std::size_t i = 0; i < bodies.size(); ++i) {
            bodies[i].bytes = std::string_view(frames).substr(offset + headSize, sizes[i]);
            offset += headSize + sizes[i];
        }
    }

    std::vector<std::size_t> sizes;
};

std::unique_ptr<google::protobuf::Message> freshMessage(MessageTypes::MessageType type)
{
    if (type == MessageTypes::OBJECT_INFO) {
        return std::make_unique<Vantor::ObjectInfo>();
    }
    return std::make_unique<Vantor::ObjectUpdate>();
}

// What every way to read the traffic has to do once a body is found: a message, an event, a place in the
// list. parse(message, body) fills the message.
template <class Parse>
EventList readAll(const Traffic& traffic, Parse parse)
{
    EventList events;
    for (const Body& body : traffic.bodies) {
        auto event = boost::make_shared<NetworkEvent>();
        auto message = freshMessage(body.type);
        if (parse(*message, body.bytes)) {
            event->messageType = body.type;
            event->message = message.release();
            events.push_back(std::move(event));
        }
    }
    return events;
}

EventList readFrames(const Traffic& traffic)
{
    std::string leftover;
    return MessageSerializer::deserializeMessageArray(traffic.frames.data(), traffic.frames.size(),
                                                      &leftover);
}

// As a socket delivers a long run: in buffers of 2,048 bytes, most of which end inside a frame.
EventList readChunks(const Traffic& traffic)
{
    constexpr std::size_t chunk = 2048;
    std::string leftover;
    EventList events;
    for (std::size_t at = 0; at < traffic.frames.size(); at += chunk) {
        const std::size_t size = std::min(chunk, traffic.frames.size() - at);
        events.splice(events.end(), MessageSerializer::deserializeMessageArray(traffic.frames.data() + at,
                                                                               size, &leftover));
    }
    return events;
}

EventList readCutBodies(const Traffic& traffic)
{
    return readAll(traffic, [](google::protobuf::Message& message, std::string_view body) {
        return message.ParseFromArray(body.data(), static_cast<int>(body.size()));
    });
}

EventList readDelimited(const Traffic& traffic)
{
    google::protobuf::io::ArrayInputStream in(traffic.delimited.data(),
                                              static_cast<int>(traffic.delimited.size()));
    return readAll(traffic, [&in](google::protobuf::Message& message, std::string_view) {
        return google::protobuf::util::ParseDelimitedFromZeroCopyStream(&message, &in, nullptr);
    });
}

void framing(benchmark::State& state, EventList (*read)(const Traffic&))
{
    const Traffic traffic(static_cast<unsigned int>(state.range(0)));
    if (read(traffic).size() != traffic.bodies.size()) {
        state.SkipWithError("not every message was read");
    }
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(read(traffic));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

BENCHMARK_CAPTURE(framing, ours, readFrames)->Arg(1)->Arg(20)->Arg(1000);
BENCHMARK_CAPTURE(framing, chunks, readChunks)->Arg(1000);
BENCHMARK_CAPTURE(framing, floor, readCutBodies)->Arg(1)->Arg(20)->Arg(1000);
BENCHMARK_CAPTURE(framing, delimited, readDelimited)->Arg(1)->Arg(20)->Arg(1000);

}  // namespace
