#include "network/PacketSender.h"
#include "tests/engine/FreshWorld.h"

#include <boost/asio/io_service.hpp>
#include <boost/asio/ip/udp.hpp>

#include <vector>

namespace {

using boost::asio::ip::udp;

// What the messages and the carriers are, and that Escape ends the game, is compared in tests/end_to_end.
class Controller : public FreshWorld
{
protected:
    // How many messages one frame of dt seconds sends.
    std::string sentWithin(float dt)
    {
        controller->update(dt);
        service.restart();
        service.run();
        int count = 0;
        for (char first[1]; server.available() > 0; ++count) {
            server.receive(boost::asio::buffer(first));
        }
        return std::to_string(count);
    }

    boost::asio::io_service service;
    udp::socket server{service, udp::endpoint(boost::asio::ip::address_v4::loopback(), 0)};
    udp::socket client{service, udp::v4()};
    udp::endpoint endpoint = server.local_endpoint();
};

}  // namespace

TEST_F(Controller, InputIsSentOnceFiftyMillisecondsHaveGatheredAndTheRestIsDropped)
{
    PacketSender::getInstance()->setSocket(&client);
    PacketSender::getInstance()->setEndpoint(&endpoint);
    const std::pair<std::vector<float>, std::string> cases[] = {
        {{0.017F, 0.017F, 0.017F, 0.017F, 0.017F, 0.017F}, "001001"},
        {{0.05F, 0.0499F, 0.0F, 0.0002F}, "1001"},
        {{0.2F, 0.04F, 0.04F}, "101"},
    };
    for (const auto& [frames, expected] : cases) {
        sentWithin(1.0F);  // no time has gathered from here on
        std::string sent;
        for (const float dt : frames) {
            sent += sentWithin(dt);
        }
        EXPECT_EQ(sent, expected);
    }
}

TEST_F(Controller, KeysRollTheCameraByTheFrameTimeAndTheMouseTurnsItPerPixel)
{
    VT.inputHandler.keyStates[SDLK_e] = true;
    controller->update(0.5F);
    controller->setCamera();
    expectNear(controller->camera.up, {-0.4794255F, 0.8775826F, 0.0F});  // half a radian
    controller->camera = Camera();
    VT.inputHandler.keyStates[SDLK_q] = true;  // the two cancel
    glRecorder.mouseX = 500;
    glRecorder.mouseY = 320;
    controller->update(0.5F);
    controller->setCamera();
    expectNear(controller->camera.direction, {-0.4770304F, -0.0998334F, 0.8731986F});
}
