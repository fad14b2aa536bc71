#pragma once

#include "Common/Protobuf/Object/Object.pb.h"
#include "math/Vector3.h"
#include "network/Framing.h"
#include "network/MessageTypes.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

/// What a server has said, in order.
struct Heard
{
    Vantor::Welcome welcome;
    std::vector<Vantor::ObjectInfo> infos;
    std::vector<Vantor::ObjectUpdate> updates;
    std::vector<std::uint64_t> destroyed;
    std::map<std::uint64_t, Vector3> positions;  ///< the newest of each object

    /// Moves the whole frames at the front of the stream here.
    void take(std::string& stream)
    {
        while (const std::size_t length = framing::wholeFrameLength(stream.data(), stream.size())) {
            const char type = stream[2];
            const std::string body = stream.substr(3, length - 1);
            stream.erase(0, 2 + length);
            if (type == MessageTypes::WELCOME) {
                EXPECT_TRUE(infos.empty()) << "nothing comes before the welcome";
                EXPECT_TRUE(welcome.ParseFromString(body));
            } else if (type == MessageTypes::OBJECT_INFO) {
                takeState(infos.emplace_back(), body);
            } else if (type == MessageTypes::OBJECT_UPDATE) {
                takeState(updates.emplace_back(), body);
            } else {
                Vantor::ObjectDestroy destroy;
                EXPECT_TRUE(destroy.ParseFromString(body));
                destroyed.push_back(destroy.id());
            }
        }
    }

private:
    template <class State>
    void takeState(State& state, const std::string& body)
    {
        EXPECT_TRUE(state.ParseFromString(body));
        positions[state.id()] = {state.position().x(), state.position().y(), state.position().z()};
    }
};
