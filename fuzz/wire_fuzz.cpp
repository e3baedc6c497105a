// Feeds mutated messages, stream ids, search datagrams and device codes to every decoder of the
// link. Deterministic: the seed and the number of rounds may be given as arguments.
#include "link/device_code.h"
#include "link/wire/frame_assembler.h"

#include <cstdio>
#include <cstdlib>
#include <random>

using namespace orvelle;

namespace {

using Bytes = std::vector<uint8_t>;

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
    all.push_back(bytesOf(encodeStreamId({StreamPurpose::Media, "CAMERA1", "admin", 9, 3, 1})));
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
    decodeStreamId(text);
    char uid[1024] = "";
    char password[1024] = "";
    GetDeUIDPasswd(text.c_str(), uid, password);
    decodeSearchQuery(bytes.data(), bytes.size());
    decodeSearchAnswer(bytes.data(), bytes.size());
}

}  // namespace

int main(int argc, char** argv) {
    const auto argument = [&](int index, unsigned long otherwise) {
        return argc > index ? std::strtoul(argv[index], nullptr, 10) : otherwise;
    };
    std::mt19937 random(static_cast<uint32_t>(argument(1, 1)));
    const unsigned long rounds = argument(2, 300'000);
    const std::vector<Bytes> corpus = seeds();
    FrameAssembler assembler;
    for (unsigned long i = 0; i < rounds; ++i) {
        Bytes bytes = corpus[random() % corpus.size()];
        mutate(bytes, random);
        // A block of its own size, so that the address sanitizer sees any read beyond it.
        const Bytes exact(bytes.begin(), bytes.end());
        feedTexts(exact);
        if (!isFaithful(exact, assembler)) {
            std::fprintf(stderr, "round %lu: a decoder is not faithful\n", i);
            return 1;
        }
    }
    return 0;
}
