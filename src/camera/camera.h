#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "camera/camera_commands.h"
#include "camera/camera_profile.h"
#include "camera/card/memory_card.h"
#include "camera/card/playbacks.h"
#include "camera/demo/pan_tilt.h"
#include "camera/feed/feed.h"
#include "camera/feed/gop_cache.h"
#include "link/server/link_server.h"

namespace orvelle {

/// How a camera is reached.
struct CameraAddress {
    std::string password;  ///< of the account "admin"; never logged
    std::string bindAddress = "0.0.0.0";
    uint16_t port = 0;           ///< 0 lets the system choose
    uint16_t discoveryPort = 0;  ///< 0 takes the well-known one
};

/// One camera on the network: a link server whose clients watch a feed.
///
/// The feed may be shared by several cameras. Its owner opens it before their construction, starts
/// it afterwards and stops it before their destruction. Commands arrive on the server's thread,
/// frames on the feed's threads.
class Camera : private LinkServerListener, private FrameSink, private CameraActions {
public:
    /// `panTilt` may be null for a fixed camera, `card` for one without; all are borrowed. The
    /// card is stopped before the camera is destroyed.
    Camera(CameraProfile profile, CameraAddress address, Feed* feed, PanTilt* panTilt,
           MemoryCard* card = nullptr);
    ~Camera() override;

    /// Opens the port; 0, or the link's code when it is taken or the UID is unusable.
    int start();
    /// Says goodbye to every client. Idempotent.
    void stop();

    const CameraProfile& profile() const { return m_profile; }
    uint16_t port() const;  ///< once started
    LinkServerStats stats() const;

private:
    struct Viewer {
        bool wantsVideo = false;
        bool wantsAudio = false;
        bool needsKey = false;  ///< until the next key frame
    };

    void clientConnected(int clientId) override;
    void controlReceived(int clientId, uint32_t type, const uint8_t* data, size_t size) override;
    void clientDisconnected(int clientId, bool orderly) override;
    void frameReady(const EncodedFrame& frame) override;
    void reply(int clientId, uint32_t type, const std::vector<uint8_t>& payload) override;
    void setVideo(int clientId, bool on) override;
    void setAudio(int clientId, bool on) override;
    void turn(int clientId, uint8_t control, uint8_t speed) override;
    CardSpace cardSpace() override;
    CardOverview cardOverview() override;
    void listRecordings(int clientId, const ListRequest& request) override;
    void playRecording(int clientId, const PlayRequest& request) override;
    void downloadRecording(int clientId, const PlayRequest& request) override;
    void grantRoom(int clientId, const RoomGrant& grant) override;
    void formatCard(int clientId) override;

    bool change(int clientId, const std::function<bool(Viewer&)>& edit);
    void letGo(int clientId, const Viewer& viewer);
    void join(int clientId, Viewer& viewer);
    void send(int clientId, const EncodedFrame& frame);
    void control(Playbacks& playbacks, uint32_t replyType, int clientId,
                 const PlayRequest& request);
    int32_t start(Playbacks& playbacks, int clientId, const std::optional<int64_t>& fromSec);

    const CameraProfile m_profile;
    Feed* const m_feed;
    PanTilt* const m_panTilt;
    MemoryCard* const m_card;
    CameraCommands m_commands;  ///< server thread

    std::mutex m_mutex;  ///< guards the next two; held while frames are queued, so that a
                         ///< joining viewer misses none and gets none twice
    std::map<int, Viewer> m_viewers;
    GopCache m_cache;

    std::unique_ptr<LinkServer> m_server;  ///< its thread uses everything here
    Playbacks m_playbacks;                 ///< server thread
    Playbacks m_downloads;                 ///< server thread
};

}  // namespace orvelle
