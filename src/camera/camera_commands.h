#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <vector>

#include "camera/camera_profile.h"
#include "camera/card/card_messages.h"

namespace orvelle {

/// What commands make a camera do.
class CameraActions {
public:
    virtual ~CameraActions() = default;
    virtual void reply(int clientId, uint32_t type, const std::vector<uint8_t>& payload) = 0;
    virtual void setVideo(int clientId, bool on) = 0;
    virtual void setAudio(int clientId, bool on) = 0;
    virtual void turn(int clientId, uint8_t control, uint8_t speed) = 0;
    /// From memory; a total of 0 without a card.
    virtual CardSpace cardSpace() = 0;
    virtual CardOverview cardOverview() = 0;
    virtual void listRecordings(int clientId, const ListRequest& request) = 0;
    virtual void playRecording(int clientId, const PlayRequest& request) = 0;
    /// The same, beside what the client watches.
    virtual void downloadRecording(int clientId, const PlayRequest& request) = 0;
    virtual void grantRoom(int clientId, const RoomGrant& grant) = 0;
    virtual void formatCard(int clientId) = 0;
};

/// Answers a camera's control messages. Unknown types and messages shorter than their layout
/// are ignored, with one log line for each type. One thread.
class CameraCommands {
public:
    /// Both are borrowed.
    CameraCommands(const CameraProfile& profile, CameraActions* actions);

    void handle(int clientId, uint32_t type, const uint8_t* data, size_t size);

private:
    bool act(int clientId, uint32_t type, const uint8_t* data);
    void answer(int clientId, uint32_t type);
    void refuse(uint32_t type, size_t size, const char* reason);

    const CameraProfile& m_profile;
    CameraActions* const m_actions;
    std::set<uint32_t> m_refused;  ///< types already logged
};

}  // namespace orvelle
