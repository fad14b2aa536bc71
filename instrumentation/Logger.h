#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

/// Counts network traffic per channel, turns the counts into rates, and appends measurements to a text file.
///
/// A singleton, created on first use and never destroyed. The network thread increments the counters without
/// a lock: they are statistics, and a reader may miss the latest increment. One other thread calls calcPrS()
/// and then writeMeasurementToFile() about once a second.
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
    /// Recomputes the rates if more than a second has passed since the last computation.
    void calcPrS();
    /// Appends one row: the rates, the numbers of players and projectiles in the scene, ResourceMonitor's
    /// figures and the extra columns. Writes a header before this object's first row. Does nothing if the
    /// file cannot be opened.
    void writeMeasurementToFile();

    // Rates per second, as of the last calcPrS().
    float packetRate[channels] = {};
    float messageRate[channels] = {};
    float byteRate[channels] = {};
    std::string fileName = "log.csv";
    std::uint32_t rowsWritten = 0;
    // Totals since the start. Nothing counts messages of the two sent channels.
    std::uint64_t packets[channels] = {};
    std::uint64_t messages[channels] = {};
    std::uint64_t bytes[channels] = {};
    std::uint64_t lastRateTime;  ///< milliseconds since the Unix epoch
    // Totals at lastRateTime.
    std::uint64_t lastPackets[channels] = {};
    std::uint64_t lastMessages[channels] = {};
    std::uint64_t lastBytes[channels] = {};
    /// The program's own columns by title, written behind the others. The client has none.
    std::map<std::string, std::uint64_t> extraColumns;
};
