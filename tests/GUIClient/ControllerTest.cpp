#include "GUIClient/Helpers.h"
#include "network/PacketSender.h"
#include "scene/TestCube.h"
#include "tests/engine/FreshWorld.h"
#include "tests/support/Messages.h"

#include <boost/asio/io_service.hpp>
#include <boost/asio/ip/udp.hpp>

namespace {

using boost::asio::ip::udp;

const udp::endpoint anyLoopbackPort(boost::asio::ip::address_v4::loopback(), 0);

// With a server's end on the loopback that the client's sender is pointed at.
class Controller : public FreshWorld
{
protected:
    Controller()
    {
        PacketSender* sender = PacketSender::getInstance();
        sender->setSocket(&client);
        sender->setEndpoint(&endpoint);
        sentWithin(1.0F);  // no time has gathered from here on
    }

    static void send(Uint8 type, SDLKey key)
    {
        glRecorder.send(type, key);
        VT.inputHandler.handleEvents();
    }

    // The messages that one frame of dt seconds sends.
    std::vector<support::Steering> sentWithin(float dt)
    {
        controller->update(dt);
        service.restart();
        service.run();
        std::vector<support::Steering> messages;
        while (server.available() > 0) {
            std::string datagram(server.available(), '\0');
            server.receive(boost::asio::buffer(datagram));
            messages.push_back(support::parseSteering(datagram).value());
        }
        return messages;
    }

    boost::asio::io_service service;
    udp::socket server{service, anyLoopbackPort};
    udp::socket client{service, anyLoopbackPort};
    udp::endpoint endpoint = server.local_endpoint();
};

}  // namespace

TEST_F(Controller, PlacesTheCarriersAndListensToTheKeyboard)
{
    controller->init();
    EXPECT_EQ(graph->children, (std::list<Transform*>{controller->redCarrier, controller->blueCarrier}));
    EXPECT_EQ(graph->getOBjectById(0), controller->blueCarrier);
    send(SDL_KEYDOWN, SDLK_w);
    EXPECT_FALSE(done);
    send(SDL_KEYUP, SDLK_ESCAPE);
    EXPECT_TRUE(done);
}

// Which control is which bit is compared in tests/end_to_end.
TEST_F(Controller, TheMessageCarriesTheControlsAndTheCamerasOrientation)
{
    const Quaternion view(0.5F, -0.25F, 0.125F, 2.0F);
    controller->setCameraOrientation(view);
    send(SDL_KEYDOWN, SDLK_c);
    glRecorder.mouseButtons = 1;  // the left one
    const auto messages = sentWithin(0.05F);
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages[0].boosters, 0x40000020U);
    EXPECT_EQ(messages[0].orientation, view);
}

TEST_F(Controller, InputIsSentOnceFiftyMillisecondsHaveGatheredAndTheRestIsDropped)
{
    const std::pair<std::vector<float>, std::string> cases[] = {
        {{0.017F, 0.017F, 0.017F, 0.017F, 0.017F, 0.017F}, "001001"},
        {{0.05F, 0.0499F, 0.0F, 0.0002F}, "1001"},
        {{0.2F, 0.04F, 0.04F}, "101"},
    };
    for (const auto& [frames, expected] : cases) {  // how many messages in each of the frames
        sentWithin(1.0F);
        std::string sent;
        for (const float dt : frames) {
            sent += std::to_string(sentWithin(dt).size());
        }
        EXPECT_EQ(sent, expected);
    }
}

TEST_F(Controller, KeysRollTheCameraByTheFrameTimeAndTheMouseTurnsItPerPixel)
{
    send(SDL_KEYDOWN, SDLK_e);
    controller->update(0.5F);
    controller->setCamera();
    expectNear(controller->camera.up, {-0.4794255F, 0.8775826F, 0.0F});  // half a radian
    controller->camera = Camera();
    send(SDL_KEYDOWN, SDLK_q);  // the two cancel
    glRecorder.mouseX = 500;
    glRecorder.mouseY = 320;
    controller->update(0.5F);
    controller->setCamera();
    expectNear(controller->camera.direction, {-0.4770304F, -0.0998334F, 0.8731986F});
}
