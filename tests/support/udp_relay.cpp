#include "support/udp_relay.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <map>
#include <mutex>
#include <optional>
#include <random>
#include <thread>
#include <vector>

#include "platform/datagram_socket.h"

namespace orvelle {

namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t kMaxDatagram = 2048;
constexpr int kMaxWaitMs = 20;

sockaddr_in loopback(uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

using Socket = std::unique_ptr<DatagramSocket>;

Socket openLoopbackSocket() {
    auto opened = std::make_unique<DatagramSocket>();
    const sockaddr_in address = loopback(0);
    const int room = 4 * 1024 * 1024;
    setsockopt(opened->descriptor(), SOL_SOCKET, SO_RCVBUF, reinterpret_cast<const char*>(&room),
               sizeof room);
    if (bind(opened->descriptor(), reinterpret_cast<const sockaddr*>(&address), sizeof address) < 0)
        std::abort();
    return opened;
}

using Client = std::pair<uint32_t, uint16_t>;  // address and port, as the network has them

// A datagram on its way out.
struct Departure {
    std::vector<uint8_t> bytes;
    DatagramSocket* socket;
    sockaddr_in to;
};

// One direction: its settings and the bottleneck's state.
struct Lane {
    RelayPath path;
    Clock::time_point free{};  // when the bottleneck has sent what it holds
    std::atomic<uint64_t> forwarded{0};
    std::atomic<uint64_t> dropped{0};
};

}  // namespace

class UdpRelay::Impl {
public:
    Impl(uint16_t targetPort, uint32_t seed)
        : m_target(loopback(targetPort)), m_front(openLoopbackSocket()), m_random(seed) {
        sockaddr_in bound{};
        socklen_t size = sizeof bound;
        getsockname(m_front->descriptor(), reinterpret_cast<sockaddr*>(&bound), &size);
        m_port = ntohs(bound.sin_port);
        m_thread = std::thread([this] { run(); });
    }

    ~Impl() {
        m_stopped = true;
        m_thread.join();
    }

    uint16_t port() const { return m_port; }
    Lane& lane(RelayDirection direction) { return m_lanes[static_cast<size_t>(direction)]; }

    void change(RelayDirection direction, const RelayPath& path) {
        std::lock_guard<std::mutex> lock(m_mutex);
        lane(direction).path = path;
    }

    void setSilent(bool silent) {
        std::lock_guard<std::mutex> lock(m_mutex);
        for (Lane& each : m_lanes)
            each.path.silent = silent;
    }

    void setTamper(Tamper tamper) {
        std::lock_guard<std::mutex> lock(m_tamperMutex);
        m_tamper = std::move(tamper);
    }

    void playToCamera(std::vector<Datagram> datagrams) {
        std::lock_guard<std::mutex> lock(m_tamperMutex);
        m_toPlay = std::move(datagrams);
    }

private:
    void run() {
        while (!m_stopped) {
            play();
            waitForDatagrams();
            readFront();
            for (const auto& [client, back] : m_back)
                readBack(client, *back);
            sendDue();
        }
    }

    void waitForDatagrams() const {
        fd_set sockets;
        FD_ZERO(&sockets);
        FD_SET(m_front->descriptor(), &sockets);
        DatagramSocket::Descriptor last = m_front->descriptor();
        for (const auto& [client, back] : m_back) {
            FD_SET(back->descriptor(), &sockets);
            last = std::max(last, back->descriptor());
        }
        timeval wait = {};
        wait.tv_usec = waitMs() * 1000;
        select(static_cast<int>(last) + 1, &sockets, nullptr, nullptr, &wait);
    }

    int waitMs() const {
        if (m_departures.empty())
            return kMaxWaitMs;
        const auto left = m_departures.begin()->first - Clock::now();
        const auto ms = std::chrono::ceil<std::chrono::milliseconds>(left).count();
        return static_cast<int>(std::clamp<int64_t>(ms, 0, kMaxWaitMs));
    }

    void readFront() {
        sockaddr_in from{};
        while (auto bytes = read(*m_front, from)) {
            const auto key = std::make_pair(from.sin_addr.s_addr, from.sin_port);
            auto back = m_back.find(key);
            if (back == m_back.end())
                back = m_back.emplace(key, openLoopbackSocket()).first;
            tamper(RelayDirection::ToCamera, {*std::move(bytes), back->second.get(), m_target});
        }
    }

    void readBack(const Client& client, DatagramSocket& socket) {
        sockaddr_in from{};
        sockaddr_in to = loopback(0);
        to.sin_addr.s_addr = client.first;
        to.sin_port = client.second;
        while (auto bytes = read(socket, from))
            tamper(RelayDirection::ToClient, {*std::move(bytes), m_front.get(), to});
    }

    void play() {
        std::vector<Datagram> playing;
        {
            std::lock_guard<std::mutex> lock(m_tamperMutex);
            playing.swap(m_toPlay);
        }
        for (const Datagram& bytes : playing) {
            for (const auto& entry : m_back)
                pass(RelayDirection::ToCamera, {bytes, entry.second.get(), m_target});
        }
    }

    void tamper(RelayDirection direction, const Departure& departure) {
        std::vector<Datagram> passing{departure.bytes};
        {
            std::lock_guard<std::mutex> lock(m_tamperMutex);
            if (m_tamper)
                passing = m_tamper(direction, departure.bytes);
        }
        for (Datagram& bytes : passing)
            pass(direction, {std::move(bytes), departure.socket, departure.to});
    }

    static std::optional<std::vector<uint8_t>> read(DatagramSocket& socket, sockaddr_in& from) {
        std::array<uint8_t, kMaxDatagram> buffer;
        const int count = socket.receive(buffer.data(), buffer.size(), from);
        if (count < 0)
            return std::nullopt;
        return std::vector<uint8_t>(buffer.begin(), buffer.begin() + count);
    }

    void pass(RelayDirection direction, Departure departure) {
        std::lock_guard<std::mutex> lock(m_mutex);
        Lane& on = lane(direction);
        const Clock::time_point now = Clock::now();
        Clock::time_point due = now;
        bool isLost = on.path.silent || chance() * 100 < on.path.lossPercent;
        if (!isLost && on.path.bitsPerSecond > 0) {
            const auto take = [&on](size_t bytes) {
                return std::chrono::nanoseconds(static_cast<int64_t>(bytes) * 8'000'000'000 /
                                                on.path.bitsPerSecond);
            };
            on.free = std::max(on.free, now);
            isLost = on.free - now > take(static_cast<size_t>(on.path.queueBytes));
            if (!isLost)
                due = on.free += take(departure.bytes.size());
        }
        if (isLost) {
            ++on.dropped;
            return;
        }
        ++on.forwarded;
        due += std::chrono::microseconds(on.path.delayMs * 1000) +
               std::chrono::microseconds(static_cast<int64_t>(chance() * on.path.jitterMs * 1000));
        m_departures.emplace(due, std::move(departure));
    }

    void sendDue() {
        const Clock::time_point now = Clock::now();
        while (!m_departures.empty() && m_departures.begin()->first <= now) {
            const Departure& due = m_departures.begin()->second;
            [[maybe_unused]] const bool isSent =
                due.socket->send(due.bytes.data(), due.bytes.size(), due.to);
            m_departures.erase(m_departures.begin());
        }
    }

    double chance() { return std::uniform_real_distribution<double>()(m_random); }

    const sockaddr_in m_target;
    const Socket m_front;
    uint16_t m_port = 0;
    std::atomic<bool> m_stopped{false};

    // Owned by the relay's thread.
    std::mt19937 m_random;
    std::map<Client, Socket> m_back;  // towards the target
    std::multimap<Clock::time_point, Departure> m_departures;

    std::mutex m_mutex;  // guards the lanes' paths
    std::array<Lane, 2> m_lanes;
    std::mutex m_tamperMutex;  // guards the two below, also while m_tamper is called
    Tamper m_tamper;
    std::vector<Datagram> m_toPlay;
    std::thread m_thread;
};

UdpRelay::UdpRelay(uint16_t targetPort, uint32_t seed)
    : m_impl(std::make_unique<Impl>(targetPort, seed)) {}

UdpRelay::~UdpRelay() = default;

uint16_t UdpRelay::port() const {
    return m_impl->port();
}

void UdpRelay::setPath(RelayDirection direction, const RelayPath& path) {
    m_impl->change(direction, path);
}

void UdpRelay::setBothPaths(const RelayPath& path) {
    setPath(RelayDirection::ToCamera, path);
    setPath(RelayDirection::ToClient, path);
}

void UdpRelay::setSilent(bool silent) {
    m_impl->setSilent(silent);
}

void UdpRelay::setTamper(Tamper tamper) {
    m_impl->setTamper(std::move(tamper));
}

void UdpRelay::playToCamera(std::vector<Datagram> datagrams) {
    m_impl->playToCamera(std::move(datagrams));
}

uint64_t UdpRelay::forwardedDatagrams(RelayDirection direction) const {
    return m_impl->lane(direction).forwarded;
}

uint64_t UdpRelay::droppedDatagrams(RelayDirection direction) const {
    return m_impl->lane(direction).dropped;
}

}  // namespace orvelle
