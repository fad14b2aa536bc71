// The two ways in which the server ends the client. A death test reads standard error.
#include "network/PacketReceiver.h"
#include "scene/SceneGraph.h"
#include "tests/network/Loopback.h"
#include "tests/support/Messages.h"

#include <gtest/gtest.h>

#include <unistd.h>

namespace {

// A stream of `messages`, then its end, but not one datagram. Returns, and so survives, after ten seconds.
void listenToTheStreamOnly(unsigned int udpTimeout, int messages)
{
    dup2(STDERR_FILENO, STDOUT_FILENO);
    boost::asio::io_service service;
    PacketReceiver receiver(&service, nullptr, SceneGraph::getInstance(), udpTimeout);
    loopback::Connection connection(service);
    receiver.Socket(&connection.client);
    for (int n = 0; n < 100; ++n) {
        if (n < messages) {
            connection.write(support::destroy(1));
        } else {
            connection.server.close();
        }
        service.run_for(std::chrono::milliseconds(100));
        receiver.dispatchPackets();
    }
}

}  // namespace

TEST(EndDeathTest, WithoutDatagramsTheWatchdogEndsTheProcess)
{
    EXPECT_EXIT(listenToTheStreamOnly(1, 100), testing::ExitedWithCode(1),
                "^No UDP packet received in 1 - exiting with error Success\n$");
}

TEST(EndDeathTest, AClosedConnectionEndsTheProcessInPeace)
{
    EXPECT_EXIT(listenToTheStreamOnly(1000, 1), testing::ExitedWithCode(0),
                "^TCP connection CLOSED err:End of file\nConnection closed - exiting\n$");
}

TEST(EndDeathTest, AnAbortedWaitIsNoReasonToEndButAnyOtherErrorIs)
{
    boost::asio::io_service service;
    PacketReceiver receiver(&service, nullptr, SceneGraph::getInstance(), 1000);
    receiver.udpTimeout(boost::asio::error::operation_aborted);
    EXPECT_EXIT((dup2(STDERR_FILENO, STDOUT_FILENO), receiver.udpTimeout(boost::asio::error::bad_descriptor)),
                testing::ExitedWithCode(1),
                "No UDP packet received in 1000 - exiting with error Bad file descriptor");
}
