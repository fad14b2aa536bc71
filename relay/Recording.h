#pragma once

#include "relay/BadNetwork.h"
#include "relay/Recording.pb.h"

#include <cstddef>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

namespace relay {

using Chunk = recording::Chunk;

constexpr std::size_t largestChunk = 65536;  ///< bytes; more than any datagram holds

/// Writes chunks into a file as they come. Recording.proto describes the file.
///
/// The system has each chunk when `write` returns. A killed relay or a full disk leaves whole chunks and
/// perhaps the beginning of one more.
class RecordingWriter
{
public:
    /// Replaces the file. Throws std::runtime_error, here and in `write`, where that fails.
    explicit RecordingWriter(const std::string& path);

    void write(const Flow& flow, Chunk::Kind kind, const char* data = nullptr, std::size_t size = 0);

private:
    std::string path;
    std::ofstream file;
    Time start = Clock::now();

    void put(const google::protobuf::Message& message);
};

using Warn = std::function<void(const std::string& line)>;

/// Reads a whole recording. Leaves out a last chunk that is not complete, with a warning. Throws
/// std::runtime_error with one line that names the file, and the chunk where one is garbled.
std::vector<Chunk> readRecording(const std::string& path, const Warn& warn);

}  // namespace relay
