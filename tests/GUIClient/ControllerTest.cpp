#include "Common/Protobuf/Object/Object.pb.h"
#include "GUIClient/Helpers.h"
#include "GUIClient/VTEntryPoint.h"
#include "engine/Engine.h"
#include "engine/VT_Skybox.h"
#include "network/PacketSender.h"
#include "scene/SceneGraph.h"
#include "scene/TestCube.h"
#include "tests/engine/FreshWorld.h"
#include "tests/engine/GLRecorder.h"

#include <gtest/gtest.h>
#include <boost/asio/io_service.hpp>
#include <boost/asio/ip/udp.hpp>

#include <string>
#include <vector>

namespace {

using boost::asio::ip::udp;

const udp::endpoint anyLoopbackPort(boost::asio::ip::address_v4::loopback(), 0);

// A server's end on the loopback that the client's sender is pointed at.
class Server
{
public:
    Server() : endpoint(socket.local_endpoint())
    {
        PacketSender* sender = PacketSender::getInstance();
        sender->setSocket(&clientSocket);
        sender->setEndpoint(&endpoint);
        sender->setQPort(0xBEEF);
    }

    // Sends still pending free what they hold.
    ~Server() { finishSends(); }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    // All datagrams sent since the last call.
    std::vector<std::string> received()
    {
        finishSends();
        std::vector<std::string> datagrams;
        while (socket.available() > 0) {
            std::string datagram(2048, '\0');
            datagram.resize(socket.receive(boost::asio::buffer(datagram)));
            datagrams.push_back(datagram);
        }
        return datagrams;
    }

private:
    void finishSends()
    {
        service.restart();
        service.run();
    }

    boost::asio::io_service service;
    udp::socket socket{service, anyLoopbackPort};
    udp::socket clientSocket{service, anyLoopbackPort};
    udp::endpoint endpoint;
};

class Controller : public FreshWorld
{
protected:
    // No time has gathered from here on.
    Controller()
    {
        controller->update(1.0F);
        server.received();
    }

    void press(const std::vector<SDLKey>& keys, Uint8 type = SDL_KEYDOWN)
    {
        for (const SDLKey key : keys) {
            glRecorder.events.push_back(keyEvent(type, key));
        }
        VT.inputHandler.handleEvents();
    }

    // The one message that a long frame sends.
    Vantor::ClientUpdate sentUpdate()
    {
        controller->update(0.05F);
        const auto datagrams = server.received();
        Vantor::ClientUpdate update;
        EXPECT_EQ(datagrams.size(), 1U);
        if (!datagrams.empty()) {
            EXPECT_TRUE(update.ParseFromString(datagrams[0].substr(5)));
        }
        return update;
    }

    VTEntryPoint* controller = VTEntryPoint::getInstance();
    Server server;
};

}  // namespace

TEST_F(Controller, PlacesTheCarriersSetsTheSkyAndListensToTheKeyboard)
{
    controller->init();
    ASSERT_NE(VT.skybox, nullptr);
    EXPECT_EQ(VT.skybox->textureName, "skybox.png");
    EXPECT_EQ(VT.inputHandler.keyboardSubscribers, std::vector<VTObject*>{controller});
    SceneGraph* graph = SceneGraph::getInstance();
    EXPECT_EQ(graph->children, (std::list<Transform*>{controller->redCarrier, controller->blueCarrier}));
    EXPECT_EQ(*graph->getListOfType(SGT_CARRIER), graph->children);
    EXPECT_EQ(controller->redCarrier->position, Vector3(500.0F, 0.0F, 0.0F));
    EXPECT_EQ(controller->blueCarrier->position, Vector3(-500.0F, 0.0F, 0.0F));
    EXPECT_FALSE(controller->redCarrier->blueTeam);
    EXPECT_TRUE(controller->blueCarrier->blueTeam);
    EXPECT_EQ(controller->redCarrier->id, 0U);
    EXPECT_EQ(graph->getOBjectById(0), controller->blueCarrier);
}

TEST_F(Controller, EachControlHasItsBit)
{
    const struct
    {
        std::vector<SDLKey> keys;
        Uint8 buttons;
        unsigned int bits;
    } cases[] = {
        {{}, 0, 0},
        {{SDLK_w}, 0, 1},
        {{SDLK_s}, 0, 2},
        {{SDLK_d}, 0, 4},
        {{SDLK_a}, 0, 8},
        {{SDLK_SPACE}, 0, 16},
        {{SDLK_c}, 0, 32},
        {{}, 1, 0x40000000},
        {{}, 2 | 4, 0},
        {{SDLK_w, SDLK_s}, 0, 3},
        {{SDLK_e, SDLK_q, SDLK_UP, SDLK_LSHIFT}, 0, 0},
        {{SDLK_w, SDLK_s, SDLK_d, SDLK_a, SDLK_SPACE, SDLK_c}, 7, 0x4000003F},
    };
    for (const auto& c : cases) {
        VT.inputHandler = VT_InputHandler();
        press(c.keys);
        glRecorder.mouseButtons = c.buttons;
        EXPECT_EQ(sentUpdate().boosterson(), c.bits);
    }
}

TEST_F(Controller, TheMessageCarriesTheCamerasOrientation)
{
    controller->setCameraOrientation(Quaternion(0.5F, -0.25F, 0.125F, 2.0F));
    const Vantor::Orientation sent = sentUpdate().orientation();
    EXPECT_EQ(Quaternion(sent.w(), sent.x(), sent.y(), sent.z()), Quaternion(0.5F, -0.25F, 0.125F, 2.0F));
}

TEST_F(Controller, InputIsSentOnceFiftyMillisecondsHaveGatheredAndTheRestIsDropped)
{
    const struct
    {
        const char* what;
        std::vector<float> frames;
        std::string sent;  // per frame, how many messages
    } cases[] = {
        {"steady frames", {0.017F, 0.017F, 0.017F, 0.017F, 0.017F, 0.017F, 0.017F}, "0010010"},
        {"exactly the interval", {0.05F, 0.05F}, "11"},
        {"just below it", {0.0499F, 0.0F, 0.00005F, 0.0001F}, "0001"},
        {"one long frame is one message and leaves nothing over", {0.2F, 0.04F, 0.04F, 0.04F}, "1010"},
        {"no time at all", {0.0F, 0.0F, 0.0F}, "000"},
    };
    for (const auto& c : cases) {
        controller->update(1.0F);
        server.received();
        std::string sent;
        for (const float dt : c.frames) {
            controller->update(dt);
            sent += std::to_string(server.received().size());
        }
        EXPECT_EQ(sent, c.sent) << c.what;
    }
}

TEST_F(Controller, KeysRollTheCameraByTheFrameTimeAndTheMouseTurnsItPerPixel)
{
    const float sin = 0.4794255F, cos = 0.8775826F;  // of half a radian
    const struct
    {
        const char* what;
        std::vector<SDLKey> keys;
        int mouseX, mouseY;
        float dt;
        Vector3 direction, up;
    } cases[] = {{"nothing", {}, 400, 300, 0.5F, {0, 0, 1}, {0, 1, 0}},
                 {"E", {SDLK_e}, 400, 300, 0.5F, {0, 0, 1}, {-sin, cos, 0}},
                 {"Q", {SDLK_q}, 400, 300, 0.5F, {0, 0, 1}, {sin, cos, 0}},
                 {"both cancel", {SDLK_e, SDLK_q}, 400, 300, 0.5F, {0, 0, 1}, {0, 1, 0}},
                 {"right", {}, 500, 300, 0.5F, {-sin, 0, cos}, {0, 1, 0}},
                 {"left, in no time", {}, 300, 300, 0.0F, {sin, 0, cos}, {0, 1, 0}},
                 {"down", {}, 400, 400, 0.5F, {0, -sin, cos}, {0, cos, sin}},
                 {"up, in no time", {}, 400, 200, 0.0F, {0, sin, cos}, {0, cos, -sin}}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        controller->camera = Camera();
        VT.inputHandler = VT_InputHandler();
        press(c.keys);
        glRecorder.reset();
        glRecorder.mouseX = c.mouseX;
        glRecorder.mouseY = c.mouseY;
        controller->update(c.dt);
        controller->setCamera();
        expectNear(controller->camera.direction, c.direction);
        expectNear(controller->camera.up, c.up);
        EXPECT_EQ(glRecorder.named("SDL_WarpMouse"), Calls{call("SDL_WarpMouse", 400, 300)});
    }
}

TEST_F(Controller, EscapePressedOrReleasedEndsTheGame)
{
    VT.inputHandler.subscribeToKeyboardEvents(controller);
    for (const Uint8 type : {Uint8(SDL_KEYDOWN), Uint8(SDL_KEYUP)}) {
        done = false;
        press({SDLK_w, SDLK_q, SDLK_RETURN}, type);
        EXPECT_FALSE(done);
        press({SDLK_ESCAPE}, type);
        EXPECT_TRUE(done);
    }
}
