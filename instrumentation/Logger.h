#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// Counts network traffic per channel, turns the counts into rates, and appends rows of measurements to a
/// text file.
///
/// A singleton, created on first use and never destroyed. The counters are plain numbers that the network
/// thread increments without a lock: they are statistics, and a reader may miss the latest increment. Rates
/// and file belong to whoever calls calcPrS() and then writeMeasurementToFile() now and then, about once a
/// second.
class Logger
{
public:
    enum Channel : unsigned int
    {
        TCP_SENT = 0,
        TCP_RECEIVED = 1,
        UDP_SENT = 2,
        UDP_RECEIVED = 3
    };
    static constexpr std::size_t channels = 4;

    static Logger* instance;
    static Logger* getInstance();

    Logger();

    void countPacket(Channel channel, std::size_t size)
    {
        bytes[channel] += size;
        packets[channel] += 1;
    }
    void countMessage(Channel channel) { messages[channel] += 1; }

    void setFileToWriteTo(std::string name);
    /// Recomputes the rates, where more than a second has passed since they were computed last.
    void calcPrS();
    /// Appends one row of the rates, the scene's players and projectiles and this process's resources; a
    /// header goes before this process's first. A file that cannot be opened is left alone silently.
    void writeMeasurementToFile();

    // Rates per second, as of the last calcPrS().
    float packetRate[channels] = {};
    float messageRate[channels] = {};
    float byteRate[channels] = {};
    std::string fileName = "log.csv";
    std::uint32_t rowsWritten = 0;
    // Totals since the start; nothing counts the messages of the two sent channels.
    std::uint64_t packets[channels] = {};
    std::uint64_t messages[channels] = {};
    std::uint64_t bytes[channels] = {};
    std::uint64_t lastRateTime;  ///< milliseconds since the Unix epoch
    // Totals as they stood at lastRateTime.
    std::uint64_t lastPackets[channels] = {};
    std::uint64_t lastMessages[channels] = {};
    std::uint64_t lastBytes[channels] = {};
};
