// The main loop and the player's input. tests/engine compares what a frame draws; tests/end_to_end checks the
// messages, the carriers, and Escape.
#include "network/Timer.h"
#include "tests/engine/FreshWorld.h"

#include <boost/asio/io_service.hpp>
#include <boost/asio/ip/udp.hpp>

namespace {

using Controller = FreshWorld;
using MainLoop = FreshWorld;

// The loop's functions have no arguments: these are theirs.
int ticks = 0, notes = 0;
std::int64_t lastPlan, lastTick;

// Expects to be called after the planned time, which is a period after the call before. The last call stops
// the loop.
void tick()
{
    const std::int64_t plan = mainLoopFunctionsList[0].nextCallTime;
    EXPECT_GT(Timer::getCurrentTime(), plan);
    if (++ticks > 1) {
        EXPECT_GT(plan, lastPlan + 16);
        EXPECT_LE(plan, lastTick + 16);
    }
    lastPlan = plan;
    lastTick = Timer::getCurrentTime();
    if (ticks == 6) {
        EXPECT_EQ(notes, 1) << "due once in ten seconds";
        mainLoopFunctionsList[1].nextCallTime = 0;
        Helpers::stop();
    }
}

}  // namespace

TEST_F(MainLoop, CallsComeAPeriodApartUntilThePassOfAStopEnds)
{
    Helpers::registerMainLoopFunction(tick, 60.0F);
    Helpers::registerMainLoopFunction([] { ++notes; }, 0.1F);
    Helpers::stop();  // has no effect on a later run
    Helpers::run();
    EXPECT_EQ(ticks, 6);
    EXPECT_EQ(notes, 2) << "the last pass goes to its end,";
    EXPECT_GE(Timer::getCurrentTime(), lastTick + 10) << "and includes its sleep";
}

TEST_F(Controller, SendsOnceFiftyMillisecondsHaveGathered)
{
    boost::asio::io_service service;
    boost::asio::ip::udp::socket client(service, boost::asio::ip::udp::v4());
    boost::asio::ip::udp::endpoint nobody(boost::asio::ip::address_v4::loopback(), 9);
    PacketSender::getInstance()->setSocket(&client);
    PacketSender::getInstance()->setEndpoint(&nobody);
    const std::pair<float, std::size_t> frames[] = {{1, 1},     {0.017F, 0},  {0.017F, 0},  {0.017F, 1},
                                                    {0.05F, 1}, {0.0499F, 0}, {0.0002F, 1}, {1, 1},
                                                    {0.04F, 0}};  // the time above 50 ms is dropped
    for (const auto& [dt, messages] : frames) {
        controller->update(dt);
        service.restart();
        EXPECT_EQ(service.run(), messages) << dt;  // one handler for each message
    }
}

TEST_F(Controller, KeysRollTheCamera)
{
    for (const SDLKey key : {SDLK_e, SDLK_q}) {
        VT.inputHandler.keyStates[key] = true;
        controller->update(0.5F);
        controller->setCamera();
        // half a radian; then both cancel
        expectNear(controller->camera.up, {-0.4794255F, 0.8775826F, 0.0F});
    }
}
