// Feeds mutated messages, logins, search datagrams and device codes to every decoder of the link,
// and to both ends of a login. Deterministic: the seed and the number of rounds may be given as
// arguments.
#include "link/client/login_exchange.h"
#include "link/crypto/sealing.h"
#include "link/device_code.h"
#include "link/server/login_gate.h"
#include "link/wire/frame_assembler.h"
#include "link/wire/socket_opening.h"
#include "link/wire/version_one.h"

#include <cstdio>
#include <cstdlib>
#include <random>

using namespace orvelle;

namespace {

constexpr unsigned long kRoundsPerLogin = 100;

template <class Encoded>
Bytes bytesOf(const Encoded& encoded) {
    return Bytes(encoded.begin(), encoded.end());
}

Bytes bytesOf(const EncodedMessage& message) {
    return Bytes(message.bytes.data(), message.bytes.data() + message.size);
}

std::vector<Bytes> seeds() {
    static const Bytes payload(kFragmentPayloadBytes, 0x55);
    FrameFragment fragment;
    fragment.totalBytes = 3 * kFragmentPayloadBytes;
    fragment.count = 3;
    fragment.data = payload.data();
    fragment.size = payload.size();
    std::vector<Bytes> all;
    for (uint16_t i = 0; i < fragment.count; ++i) {
        fragment.index = i;
        all.push_back(bytesOf(encodeMessage(fragment)));
    }
    for (const Message& message :
         {Message{HelloMessage{}}, Message{WelcomeMessage{}}, Message{PingMessage{1}},
          Message{ByeMessage{-1}}, Message{ControlMessage{0x680, payload.data(), 8}}})
        all.push_back(bytesOf(encodeMessage(message)));
    all.push_back(bytesOf(encodeSearchQuery({7, "CAMERA1"})));
    all.push_back(bytesOf(encodeSearchAnswer({7, "CAMERA1", 4000, "Door"})));
    for (const LoginMessage& message :
         {LoginMessage{LoginHello{9, {}, {}, "CAMERA1", "admin", {}}}, LoginMessage{LoginCookie{}},
          LoginMessage{LoginWelcome{}}, LoginMessage{LoginProof{}}, LoginMessage{LoginReady{}},
          LoginMessage{LoginRefused{9, -20009}}})
        all.push_back(encodeLogin(message));
    const SecretKey secret;
    const OpenMessage open = makeOpen(SocketPurpose::Media, 3, 9, secret);
    all.push_back(encodeOpen(open));
    all.push_back(encodeOpened(makeOpened(open, 0, secret)));
    all.push_back(versionOneProbe());
    all.push_back(bytesOf(encodeDeviceCode("CAMERA1", "secret word")));
    return all;
}

void mutate(Bytes& bytes, std::mt19937& random) {
    for (unsigned i = random() % 4; i > 0 && !bytes.empty(); --i)
        bytes[random() % bytes.size()] = static_cast<uint8_t>(random());
    switch (random() % 6) {
        case 0:
            bytes.resize(random() % (bytes.size() + 1));
            break;
        case 1:
            bytes.resize(bytes.size() + random() % 100, static_cast<uint8_t>(random()));
            break;
        default:
            break;
    }
}

// What a decoder lets through must encode to what came in, or it read something else than it says.
bool isFaithful(const Bytes& bytes, FrameAssembler& assembler) {
    const auto message = decodeMessage(bytes.data(), bytes.size());
    if (!message)
        return true;
    if (const auto* fragment = std::get_if<FrameFragment>(&*message)) {
        if (assembler.add(*fragment) == FrameAssembler::Result::Complete &&
            assembler.take().data.size() != fragment->totalBytes)
            return false;
    }
    const Bytes again = bytesOf(encodeMessage(*message));
    const auto decodedAgain = decodeMessage(again.data(), again.size());
    return again.size() == bytes.size() && decodedAgain &&
           decodedAgain->index() == message->index();
}

void feedTexts(const Bytes& bytes) {
    const std::string text(bytes.begin(), bytes.end());
    char uid[1024] = "";
    char password[1024] = "";
    GetDeUIDPasswd(text.c_str(), uid, password);
    decodeSearchQuery(bytes.data(), bytes.size());
    decodeSearchAnswer(bytes.data(), bytes.size());
}

// Whatever a stranger sends, a login goes on, and no session is admitted.
class LoginTarget : public LoginGate::Host {
public:
    bool feed(const Bytes& bytes, int64_t nowMs) {
        const auto answer = m_gate.handle(bytes.data(), bytes.size(), m_from, nowMs);
        m_gate.expire(nowMs);
        if (nowMs % 5000 == 0)
            m_exchange.emplace(m_identity, m_from, 0);
        m_exchange->due(nowMs);
        if (const auto message = decodeLogin(bytes.data(), bytes.size()))
            m_exchange->handle(*message, nowMs);
        const bool isFooled = !m_exchange->isPending() && m_exchange->result() == 0;
        const bool isAmplified = answer && answer->bytes.size() > bytes.size();
        return !isFooled && !isAmplified && !m_isAdmitted &&
               m_gate.exchanges() <= LoginGate::kMaxExchanges;
    }

    Admission admit(uint64_t, const SecretKey&, const sockaddr_in&, uint64_t) override {
        m_isAdmitted = true;
        return {};
    }
    std::optional<sockaddr_in> peerOf(uint64_t) const override { return m_from; }

private:
    sockaddr_in m_from{};
    LoginIdentity m_identity{"CAMERA1", "admin", "secret word"};
    LoginGate m_gate{"CAMERA1", "admin", m_identity.generator, *this};
    std::optional<LoginExchange> m_exchange{std::in_place, m_identity, m_from, 0};
    bool m_isAdmitted = false;
};

// Logins between two ends that know the password, on a path that changes, repeats and loses what
// they say: either both have the same session, or there is none.
class LoginOnBadPath : public LoginGate::Host {
public:
    bool run(std::mt19937& random) {
        LoginExchange client(m_identity, m_camera, 7);
        m_admitted.reset();
        const int64_t endMs = m_nowMs + 8000;
        while (client.isPending() && m_nowMs < endMs) {
            for (const auto& out : client.due(m_nowMs)) {
                Bytes request = out.bytes;
                if (random() % 4 == 0)
                    mutate(request, random);
                for (unsigned i = random() % 3; i > 0; --i)
                    ask(client, request, random);
            }
            m_nowMs += 50;
            m_gate.expire(m_nowMs);
        }
        m_nowMs += 60'000;  // wrong proofs delay the next one
        const bool isIn = !client.isPending() && client.result() == 0;
        m_logins += isIn ? 1 : 0;
        return !isIn ||
               (m_admitted && sodium_memcmp(m_admitted->data(), client.sessionSecret().data(),
                                            SecretKey::size()) == 0);
    }
    unsigned long logins() const { return m_logins; }

    Admission admit(uint64_t, const SecretKey& secret, const sockaddr_in&, uint64_t) override {
        m_admitted = secret;
        return {};
    }
    std::optional<sockaddr_in> peerOf(uint64_t) const override { return std::nullopt; }

private:
    void ask(LoginExchange& client, const Bytes& request, std::mt19937& random) {
        const auto answer = m_gate.handle(request.data(), request.size(), m_client, m_nowMs);
        if (!answer)
            return;
        Bytes bytes = answer->bytes;
        if (random() % 4 == 0)
            mutate(bytes, random);
        if (const auto message = decodeLogin(bytes.data(), bytes.size()))
            client.handle(*message, m_nowMs);
    }

    const sockaddr_in m_camera{};
    const sockaddr_in m_client{};
    int64_t m_nowMs = 1;
    unsigned long m_logins = 0;
    LoginIdentity m_identity{"CAMERA1", "admin", "secret word"};
    LoginGate m_gate{"CAMERA1", "admin", m_identity.generator, *this};
    std::optional<SecretKey> m_admitted;
};

// Only what a sealer made opens.
bool isOpenedOnlyWhenWhole(const Bytes& bytes) {
    Opener opener{SecretKey{}};
    EncodedMessage message;
    return !opener.open(bytes.data(), bytes.size(), &message);
}

bool areOpeningsFaithful(const Bytes& bytes) {
    const auto open = decodeOpen(bytes.data(), bytes.size());
    const auto opened = decodeOpened(bytes.data(), bytes.size());
    refusalOfVersionOne(bytes.data(), bytes.size());
    isVersionOneAnswer(bytes.data(), bytes.size());
    return (!open || encodeOpen(*open).size() == bytes.size()) &&
           (!opened || encodeOpened(*opened).size() == bytes.size());
}

}  // namespace

int main(int argc, char** argv) {
    const auto argument = [&](int index, unsigned long otherwise) {
        return argc > index ? std::strtoul(argv[index], nullptr, 10) : otherwise;
    };
    std::mt19937 random(static_cast<uint32_t>(argument(1, 1)));
    const unsigned long rounds = argument(2, 300'000);
    if (!startCrypto())
        return 1;
    const std::vector<Bytes> corpus = seeds();
    LoginTarget login;
    LoginOnBadPath badPath;
    FrameAssembler assembler;
    for (unsigned long i = 0; i < rounds; ++i) {
        Bytes bytes = corpus[random() % corpus.size()];
        mutate(bytes, random);
        // A block of its own size, so that the address sanitizer sees any read beyond it.
        const Bytes exact(bytes.begin(), bytes.end());
        feedTexts(exact);
        if (!isFaithful(exact, assembler) || !login.feed(exact, static_cast<int64_t>(i)) ||
            !isOpenedOnlyWhenWhole(exact) || !areOpeningsFaithful(exact)) {
            std::fprintf(stderr, "round %lu: a decoder is not faithful\n", i);
            return 1;
        }
        if (i % kRoundsPerLogin == 0 && !badPath.run(random)) {
            std::fprintf(stderr, "round %lu: the ends of a login do not agree\n", i);
            return 1;
        }
    }
    std::printf("%lu of %lu logins on a bad path\n", badPath.logins(), rounds / kRoundsPerLogin);
    return badPath.logins() > 0 || rounds < 100 * kRoundsPerLogin ? 0 : 1;
}
