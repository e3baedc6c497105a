#include "camera/card/playbacks.h"

#include <algorithm>

#include "link/limits.h"

namespace orvelle {

namespace {

constexpr size_t kMaxPlaybacks = 8;  ///< of a camera at once

}  // namespace

Playbacks::~Playbacks() {
    stopAll();
}

int32_t Playbacks::start(int clientId, const CardStore& store, const Recording& recording,
                         int64_t fromSec) {
    stop(clientId);
    const auto isBusy = [](const auto& entry) { return !entry.second->isFinished(); };
    const int channel = nextChannel(clientId);
    if (channel == 0 || std::count_if(m_running.begin(), m_running.end(), isBusy) >=
                            static_cast<ptrdiff_t>(kMaxPlaybacks))
        return kTooManyPlaybacks;
    auto& playback = m_running[clientId];
    playback =
        std::make_unique<Playback>(PlaybackTarget{m_server, clientId, channel, m_purpose.replyType},
                                   store, recording, fromSec);
    playback->start();
    return 0;
}

void Playbacks::grant(int clientId, const RoomGrant& room) {
    const auto found = m_running.find(clientId);
    if (found != m_running.end() && found->second->channel() == room.channel)
        found->second->grant(room);
}

// Not joined at once: a slow card must not hold up the server.
void Playbacks::stop(int clientId) {
    const auto found = m_running.find(clientId);
    if (found != m_running.end()) {
        found->second->stop();
        m_stopped.push_back(std::move(found->second));
        m_running.erase(found);
    }
    reap();
}

void Playbacks::forget(int clientId) {
    stop(clientId);
    m_lastSteps.erase(clientId);
}

void Playbacks::stopAll() {
    for (auto& entry : m_running) {
        entry.second->stop();
        m_stopped.push_back(std::move(entry.second));
    }
    m_running.clear();
    for (auto& playback : m_stopped)
        KvThread::stopAndDelete(playback);
    m_stopped.clear();
}

// Channels go round, so that a late login cannot get into another playback; 0 when all are open.
int Playbacks::nextChannel(int clientId) {
    int& last = m_lastSteps[clientId];
    for (int tried = 0; tried < m_purpose.channels; ++tried) {
        last = (last + 1) % m_purpose.channels;
        const int channel = m_purpose.firstChannel + last;
        if (!m_server->isChannelOpen(clientId, channel))
            return channel;
    }
    return 0;
}

void Playbacks::reap() {
    const auto isOver = [](std::unique_ptr<Playback>& playback) {
        if (!playback->isFinished())
            return false;
        KvThread::stopAndDelete(playback);
        return true;
    };
    m_stopped.erase(std::remove_if(m_stopped.begin(), m_stopped.end(), isOver), m_stopped.end());
}

}  // namespace orvelle
