#include "relay/Recording.h"

#include "network/Framing.h"

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl.h>
#include <google/protobuf/util/delimited_message_util.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <utility>

namespace relay {

namespace {

namespace io = google::protobuf::io;

constexpr const char* format = "vantor-relay recording";
constexpr std::uint32_t version = 2;
constexpr std::uintmax_t largestFile = std::uintmax_t(512) << 20U;
constexpr std::size_t largestMessage = largestChunk + 64;  ///< the other fields take less than 64 bytes
constexpr std::uint64_t longestRecording = 365ULL * 24 * 3600 * 1'000'000;  ///< µs; sums cannot overflow

std::runtime_error systemError(const std::string& what, const std::string& path)
{
    return std::runtime_error("cannot " + what + " " + path + ": " + std::strerror(errno));
}

enum class Read : std::uint8_t
{
    message,
    endOfFile,
    incomplete,  ///< the file ends within the message
    garbled
};

/// Reads one message. Checks its length before anything is read or reserved.
Read readMessage(io::ZeroCopyInputStream& file, google::protobuf::Message& message)
{
    io::CodedInputStream input(&file);
    const void* unused = nullptr;
    int left = 0;
    if (!input.GetDirectBufferPointer(&unused, &left)) {
        return Read::endOfFile;
    }
    std::uint64_t size = 0;
    if (!input.ReadVarint64(&size)) {
        return input.GetDirectBufferPointer(&unused, &left) ? Read::garbled : Read::incomplete;
    }
    if (size > largestMessage) {
        return Read::garbled;
    }
    std::string bytes;
    if (!input.ReadString(&bytes, static_cast<int>(size))) {
        return Read::incomplete;
    }
    return framing::parseBody(message, bytes.data(), bytes.size()) ? Read::message : Read::garbled;
}

/// The parser has refused unknown enumerators: their fields would be missing. Unknown fields take many times
/// their bytes in memory.
bool isValid(const Chunk& chunk, std::uint64_t previous)
{
    const bool mayHaveBytes = chunk.kind() == Chunk::BYTES;
    return chunk.microseconds() >= previous && chunk.microseconds() <= longestRecording &&
           chunk.bytes().size() <= (mayHaveBytes ? largestChunk : 0) && chunk.unknown_fields().empty();
}

}  // namespace

RecordingWriter::RecordingWriter(const std::string& path_, LogOnce::Log log_)
    : path(path_), log(std::move(log_))
{
    std::error_code unknown;  // opening fails as well then, and that error is reported
    if (std::filesystem::is_fifo(path, unknown)) {
        throw std::runtime_error("cannot record into " + path + ": it is a pipe");
    }
    file.open(path, std::ios::binary);
    recording::Header header;
    header.set_format(format);
    header.set_version(version);
    if (!put(header)) {
        throw systemError("record into", path);
    }
}

void RecordingWriter::write(const Flow& flow, Chunk::Kind kind, const char* data, std::size_t size)
{
    if (failed) {
        return;
    }
    const auto elapsed = std::chrono::duration_cast<Duration>(Clock::now() - start);
    Chunk chunk;
    chunk.set_microseconds(static_cast<std::uint64_t>(elapsed.count()));
    chunk.set_transport(Chunk::Transport(flow.transport));
    chunk.set_number(flow.number);
    chunk.set_direction(Chunk::Direction(flow.direction));
    chunk.set_kind(kind);
    if (size > 0) {
        chunk.set_bytes(data, size);
    }
    failed = !put(chunk);
    if (failed) {
        log("the recording ends here: " + std::string(systemError("record into", path).what()));
    }
}

bool RecordingWriter::put(const google::protobuf::Message& message)
{
    return google::protobuf::util::SerializeDelimitedToOstream(message, &file) && file.flush();
}

std::vector<Chunk> readRecording(const std::string& path, const Warn& warn)
{
    std::error_code unknown;  // opening fails as well then, and that error is reported
    const std::filesystem::file_status status = std::filesystem::status(path, unknown);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        throw std::runtime_error(path + " is no regular file");
    }
    if (std::filesystem::exists(status) && std::filesystem::file_size(path) > largestFile) {
        throw std::runtime_error(path + " is larger than 512 MiB");
    }
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw systemError("read", path);
    }
    io::IstreamInputStream stream(&file);
    recording::Header header;
    if (readMessage(stream, header) != Read::message || header.format() != format ||
        header.version() != version) {
        throw std::runtime_error(path + " is no recording of this version");
    }
    std::vector<Chunk> chunks;
    std::uint64_t previous = 0;
    Read result = Read::message;
    for (Chunk chunk; (result = readMessage(stream, chunk)) == Read::message;) {
        if (!isValid(chunk, previous)) {
            result = Read::garbled;
            break;
        }
        if (chunks.size() == mostChunks) {
            throw std::runtime_error(path + " has more than " + std::to_string(mostChunks) + " chunks");
        }
        previous = chunk.microseconds();
        chunks.push_back(std::move(chunk));
    }
    const std::string place = "chunk " + std::to_string(chunks.size() + 1);
    if (file.bad()) {
        throw systemError("read", path);
    }
    if (result == Read::garbled) {
        throw std::runtime_error(path + " is garbled at " + place);
    }
    if (result == Read::incomplete) {
        warn(path + " breaks off within " + place + "; all before it is used");
    }
    return chunks;
}

}  // namespace relay
