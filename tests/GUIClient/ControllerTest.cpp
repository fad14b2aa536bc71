#include "network/PacketSender.h"
#include "tests/engine/FreshWorld.h"

#include <boost/asio/io_service.hpp>
#include <boost/asio/ip/udp.hpp>

#include <vector>

using Controller = FreshWorld;
using boost::asio::ip::udp;

// tests/end_to_end checks the messages, the carriers, and Escape.
TEST_F(Controller, SendsOnceFiftyMillisecondsHaveGathered)
{
    boost::asio::io_service service;
    udp::socket client(service, udp::v4());
    udp::endpoint nobody(boost::asio::ip::address_v4::loopback(), 9);
    PacketSender::getInstance()->setSocket(&client);
    PacketSender::getInstance()->setEndpoint(&nobody);
    const auto messagesWithin = [&](float dt) {
        controller->update(dt);
        service.restart();
        return service.run();  // one handler for each message
    };
    const std::pair<std::vector<float>, std::vector<std::size_t>> cases[] = {
        {{0.017F, 0.017F, 0.017F, 0.017F, 0.017F, 0.017F}, {0, 0, 1, 0, 0, 1}},
        {{0.05F, 0.0499F, 0.0F, 0.0002F}, {1, 0, 0, 1}},
        {{0.2F, 0.04F, 0.04F}, {1, 0, 1}},  // the time above 50 ms is dropped
    };
    for (const auto& [frames, expected] : cases) {
        messagesWithin(1.0F);  // no time has gathered from here on
        std::vector<std::size_t> sent;
        for (const float dt : frames) {
            sent.push_back(messagesWithin(dt));
        }
        EXPECT_EQ(sent, expected);
    }
}

TEST_F(Controller, KeysRollTheCameraAndTheMouseTurnsIt)
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
