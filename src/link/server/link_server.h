#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace orvelle {

/// The 16-byte information that travels with each frame; docs/protocol.md draws it.
struct LinkFrameInfo {
    uint16_t codecId = 0;      ///< camera codec id, e.g. 0x4E for H.264
    uint8_t flags = 0;         ///< video: 1 for a key frame
    uint32_t timestampMs = 0;  ///< the camera's own clock
};

struct LinkServerConfig {
    std::string uid;       ///< ASCII letters and digits, at most 20
    std::string password;  ///< of the account "admin"
    std::string deviceName;
    std::string bindAddress = "0.0.0.0";
    uint16_t port = 0;                         ///< 0 lets the system choose
    uint16_t discoveryPort = 0;                ///< 0 takes the well-known port or the environment's
    int64_t nominalBitsPerSecond = 4'000'000;  ///< of one video stream; sizes the send cap
};

struct LinkServerStats {
    uint64_t videoFramesSent = 0;
    uint64_t videoFramesDropped = 0;  ///< whole frames, as the path was too slow
    uint64_t audioFramesSent = 0;
    int clients = 0;
};

/// Receives what clients do. Called on the server's own thread, never two at once, with no
/// lock held; may call back into the server.
class LinkServerListener {
public:
    virtual ~LinkServerListener() = default;
    virtual void clientConnected(int clientId) = 0;
    /// A control message; `data` lives for the call only.
    virtual void controlReceived(int clientId, uint32_t type, const uint8_t* data, size_t size) = 0;
    /// The client is gone: `orderly` when it said goodbye, else its pings stopped.
    virtual void clientDisconnected(int clientId, bool orderly) = 0;
};

/// The camera side of the link: one UDP port that checks logins and carries control messages and
/// frames to several clients at once, and answers to searches of the local network. Nothing is
/// sent, answered or obeyed for a client that has not proved the password.
///
/// send...() may be called from any thread and never block: they hand over to a bounded
/// queue for each client and channel. When a path is too slow for the live picture, whole groups of
/// pictures are dropped up to the next key frame; frames are numbered before that, so the client
/// sees the gap. A recording's channel drops nothing, but refuses frames while it is full.
class LinkServer {
public:
    LinkServer(LinkServerConfig config, LinkServerListener* listener);
    ~LinkServer();  ///< stops
    LinkServer(const LinkServer&) = delete;
    LinkServer& operator=(const LinkServer&) = delete;

    /// 0, LINK_ER_BAD_UID, AV_ER_INVALID_ARG (password, address) or LINK_ER_NETWORK when the port
    /// is taken.
    int start();
    /// Says goodbye to every client and ends the threads. Idempotent; not from a listener call.
    void stop();
    /// The UDP port in use once started.
    uint16_t port() const;

    /// 0, -13 when the client takes nothing now, AV_ER_EXCEED_MAX_SIZE, or AV_ER_INVALID_ARG when
    /// it is gone.
    int sendControl(int clientId, uint32_t type, const void* data, size_t size);

    /// Channel 0 is the live one. A channel above 0 carries a recording: the client opens it
    /// with its own login after the camera named it in a control message. Returns 0,
    /// AV_ER_INVALID_ARG when the channel is not open or the frame is empty, AV_ER_EXCEED_MAX_SIZE
    /// for a frame beyond link/limits.h (the client sees such a frame as a gap), IOTC_ER_TIMEOUT
    /// when a recording's channel is full: the frame is to be offered again a little later.
    int sendVideo(int clientId, int channel, const LinkFrameInfo& info,
                  std::shared_ptr<const std::vector<uint8_t>> frame);
    int sendAudio(int clientId, int channel, const LinkFrameInfo& info,
                  std::shared_ptr<const std::vector<uint8_t>> frame);
    /// Whether the client has logged in on that channel.
    bool isChannelOpen(int clientId, int channel) const;
    /// Bytes that the client has not got yet of what was sent on a channel; 0 when it is not open.
    size_t waitingBytes(int clientId, int channel) const;

    LinkServerStats stats() const;

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

}  // namespace orvelle
