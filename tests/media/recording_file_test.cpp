#include "media/recording/recording_file.h"

#include <QTemporaryDir>
#include <QtTest>

#include "frames/input_packet.h"
#include "frames/parameter_sets.h"
#include "media/recording/fragment_finisher.h"
#include "media/recording/recorded_samples.h"
#include "media/recording/recording_clock.h"
#include "media/recording/unfinished_recordings.h"
#include "recording_reader.h"
#include "support/encoded_clip.h"
#include "support/full_disk.h"
#include "support/suites.h"
#include "support/tone.h"

using namespace orvelle;
using namespace orvelle::test;

namespace {

using Packet = KvBasePlayerInputPacket;

constexpr double kStepSec = 1.0 / 15;
constexpr int kRate = 8000;

/// A tone as one of the cameras' sound codecs, with the times of its packets.
struct EncodedTone {
    struct Sound {
        std::vector<uint8_t> bytes;
        double sec;
    };
    std::vector<Sound> packets;
    StreamParameters parameters;

    EncodedTone(const char* encoder, int packetCount) {
        const AVCodec* codec = avcodec_find_encoder_by_name(encoder);
        const CodecContextPtr context(avcodec_alloc_context3(codec));
        for (const AVSampleFormat* format = codec->sample_fmts; *format >= 0; ++format) {
            if (av_get_packed_sample_fmt(*format) == AV_SAMPLE_FMT_S16)
                context->sample_fmt = *format;
        }
        context->sample_rate = kRate;
        context->bit_rate = 32000;
        context->time_base = {1, kRate};
        av_channel_layout_default(&context->ch_layout, 1);
        avcodec_open2(context.get(), codec, nullptr);
        const PacketPtr packet(av_packet_alloc());
        const int samples = context->frame_size > 0 ? context->frame_size : 320;
        for (int i = 0; i < packetCount; ++i) {
            const FramePtr frame =
                toneFrame(context->sample_fmt, kRate, 1, int64_t{i} * samples, samples);
            frame->pts = int64_t{i} * samples;
            avcodec_send_frame(context.get(), frame.get());
            while (avcodec_receive_packet(context.get(), packet.get()) == 0) {
                packets.push_back({{packet->data, packet->data + packet->size},
                                   static_cast<double>(packet->pts) / kRate});
                av_packet_unref(packet.get());
            }
        }
        parameters.codec.reset(avcodec_parameters_alloc());
        avcodec_parameters_from_context(parameters.codec.get(), context.get());
    }
};

/// A recording without a recorder: a picture every 1/15 s, a key picture every five.
struct Take {
    const QTemporaryDir dir;
    const std::vector<EncodedPicture> clip = encodeClip({});
    RecordingFile file;
    int pictures = 0;

    int create(const char* format, const StreamParameters& sound = {}) {
        const std::vector<uint8_t>& key = clip[0].bytes;
        StreamParameters video;
        video.codec.reset(avcodec_parameters_alloc());
        video.codec->codec_type = AVMEDIA_TYPE_VIDEO;
        video.codec->codec_id = AV_CODEC_ID_H264;
        video.codec->width = 64;
        video.codec->height = 48;
        setExtradata(*video.codec, parameterSets(AV_CODEC_ID_H264, key.data(), key.size()));
        return file.create(dir.filePath(QStringLiteral("take")), QLatin1String(format), video,
                           sound, nullptr);
    }
    int picture(size_t bytes = 0) {
        std::vector<uint8_t> data = clip[static_cast<size_t>(pictures) % clip.size()].bytes;
        data.resize(std::max(data.size(), bytes), 0x80);
        const auto packet = Packet::copyOf(data.data(), int(data.size()), pictures % 5 == 0,
                                           AV_CODEC_ID_H264, Packet::kVideo, pictures * kStepSec);
        ++pictures;
        return file.writeVideo(*packet);
    }
    int sound(const EncodedTone::Sound& sound, int codec) {
        const auto packet = Packet::copyOf(sound.bytes.data(), int(sound.bytes.size()), true, codec,
                                           Packet::kAudio, sound.sec);
        return file.writeSound(*packet);
    }
};

class RecordingFileTest : public QObject {
    Q_OBJECT
private slots:
    void sound_isHeardAgain_whateverItsCodec_data() {
        QTest::addColumn<QByteArray>("encoder");
        QTest::addColumn<QByteArray>("format");
        QTest::addColumn<int>("codecInFile");
        for (const char* encoder :
             {"pcm_alaw", "pcm_mulaw", "adpcm_ima_qt", "g726", "libmp3lame", "libspeex"})
            QTest::newRow(encoder)
                << QByteArray(encoder) << QByteArray("mp4") << int(AV_CODEC_ID_AAC);
        QTest::newRow("MOV") << QByteArray("pcm_alaw") << QByteArray("mov") << int(AV_CODEC_ID_AAC);
        QTest::newRow("Matroska") << QByteArray("libmp3lame") << QByteArray("matroska")
                                  << int(AV_CODEC_ID_MP3);
    }

    void sound_isHeardAgain_whateverItsCodec() {
        QFETCH(const QByteArray, encoder);
        QFETCH(const QByteArray, format);
        QFETCH(const int, codecInFile);
        const EncodedTone tone(encoder.constData(), 400);
        const int codec = tone.parameters.codec->codec_id;
        Take take;
        QCOMPARE(take.create(format.constData(), tone.parameters), 0);
        const double lastSec = std::min(tone.packets.back().sec, 5.0);
        for (const EncodedTone::Sound& sound : tone.packets) {
            while (take.pictures * kStepSec <= std::min(sound.sec, lastSec))
                QCOMPARE(take.picture(), 0);
            if (sound.sec <= lastSec)
                QCOMPARE(take.sound(sound, codec), 0);
        }
        const QString path = take.file.path();
        QCOMPARE(take.file.close(), 0);
        RecordingReader reader(path);
        QVERIFY(reader.isOpen());
        QCOMPARE(int(reader.codec(1).codec_id), codecInFile);
        const std::vector<int16_t> samples = reader.decodeSound();
        QVERIFY(samples.size() > 1000 && toneShareOf(samples) > 0.8);
        // The packets end together, as the camera stamped them.
        QVERIFY(std::abs(reader.endSec(1) - reader.endSec(0)) < 0.2);
    }

    void close_leavesAPlayableFile_whenNoRoomIsLeft_data() {
        QTest::addColumn<int>("room");
        QTest::addColumn<QByteArray>("boxes");
        QTest::addColumn<int>("pictures");
        // Fragments of five pictures. The last fragment needs some 40 KB, the tables less than 4.
        const QByteArray open("ftyp moov moof mdat moof mdat moof mdat");
        QTest::newRow("none") << 0 << open << 15;
        // With the two pictures of the last fragment for which there is room.
        QTest::newRow("for the tables") << 4096 << QByteArray("ftyp mdat moov") << 17;
        QTest::newRow("for everything") << 100000 << QByteArray("ftyp mdat moov") << 20;
    }

    void close_leavesAPlayableFile_whenNoRoomIsLeft() {
        QFETCH(const int, room);
        QFETCH(const QByteArray, boxes);
        QFETCH(const int, pictures);
        if (!FullDisk::isPossible())
            QSKIP("no limit on the size of files");
        Take take;
        QCOMPARE(take.create("mp4"), 0);
        // The 17th picture ends the third fragment, since one picture waits for the next.
        while (take.pictures < 17)
            QCOMPARE(take.picture(), 0);
        while (take.pictures < 20)
            QCOMPARE(take.picture(10000), 0);
        const QString path = take.file.path();
        const FullDisk disk(static_cast<uint64_t>(QFileInfo(path).size() + room));
        QCOMPARE(take.file.close(), room == 100000 ? 0 : AVERROR(EFBIG));
        QCOMPARE(boxesOf(path), boxes);
        const RecordingReader reader(path);
        QCOMPARE(reader.packets(0), pictures);
    }

    void tracks_stayInStep_whenTheClockIsSet() {
        for (const double setSec : {-500.0, -0.5, 3.0, 1e6}) {
            RecordingClock picture, sound;
            picture.start(100.0, 0.0);
            sound.start(100.01, 0.01);
            double pictureSec = 0.0, soundSec = 0.0;
            for (int i = 1; i < 60; ++i) {
                const double cameraSec = 100.0 + i * 0.05 + (i < 30 ? 0.0 : setSec);
                const double former = std::max(pictureSec, soundSec);
                // What came first before the setting comes first after it, or the other.
                if (setSec < -1.0)
                    soundSec = sound.place(cameraSec + 0.01, picture);
                pictureSec = picture.place(cameraSec, sound);
                if (setSec > -1.0)
                    soundSec = sound.place(cameraSec + 0.01, picture);
                QVERIFY(std::abs(soundSec - pictureSec - 0.01) < 1e-6 || i == 30);
                QVERIFY(pictureSec > former - 0.02 && (pictureSec < former + 0.2 || setSec == 3.0));
            }
        }
    }

    /// A crash tears a file anywhere, and a bad disk changes its bytes.
    void tornFile_keepsEveryWholePicture() {
        Take take;
        const EncodedTone tone("pcm_alaw", 50);
        QCOMPARE(take.create("mp4", tone.parameters), 0);
        for (int i = 0; i < 50; ++i)
            QVERIFY(take.picture() == 0 && take.sound(tone.packets[size_t(i)], 65543) == 0);
        QFile written(take.file.path());
        QVERIFY(written.open(QIODevice::ReadOnly));
        const QByteArray fragments = written.readAll();
        const RecordedSamples all = readSamples(take.file.path());
        QVERIFY(all.hasPicture && all.tracks.size() == 2 && all.tracks[0].sizes.size() > 25);
        const auto firstPicture = int(all.tracks[0].chunks[0].offset + all.tracks[0].sizes[0]);

        using Outcome = FragmentFinisher::Outcome;
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("torn.mp4"));
        const auto finish = [&](const QByteArray& bytes) {
            QFile torn(path);
            return torn.open(QIODevice::WriteOnly) && torn.write(bytes) == bytes.size() &&
                           torn.flush()
                       ? FragmentFinisher(path).finish()
                       : Outcome::kNoRoom;
        };
        for (int cut = 0; cut <= fragments.size(); cut += cut < firstPicture + 10 ? 97 : 331) {
            const Outcome outcome = finish(fragments.left(cut));
            if (cut < firstPicture) {
                QVERIFY(outcome == Outcome::kNoPicture || outcome == Outcome::kNotInFragments);
                continue;
            }
            QVERIFY2(outcome == Outcome::kFinished,
                     qPrintable(QStringLiteral("cut at %1 of %2, first picture ends at %3")
                                    .arg(cut)
                                    .arg(fragments.size())
                                    .arg(firstPicture)));
            QCOMPARE(RecordingReader(path).packets(0),
                     picturesBefore(all.tracks[0], uint64_t(cut)));
            QVERIFY(FragmentFinisher(path).finish() == Outcome::kNotInFragments);
        }
        uint32_t random = 1;
        int finished = 0;
        for (int round = 0; round < 300; ++round) {
            QByteArray damaged = fragments;
            for (int change = 0; change <= round % 3; ++change) {
                random = random * 1664525 + 1013904223;
                const int at = int(random >> 8) % damaged.size();
                damaged[at] = char(round % 2 ? 0xFF : damaged[at] ^ (1 << (random & 7)));
            }
            finished += finish(damaged) == Outcome::kFinished;
            QVERIFY(QFileInfo(path).size() < 2 * fragments.size());
        }
        QVERIFY2(finished > 100, qPrintable(QString::number(finished)));
    }

    /// Of what lies in a media folder only the program's own unfinished recordings are touched.
    void start_finishesWhatACrashHasLeft() {
        Take take;
        QCOMPARE(take.create("mp4"), 0);
        QFile unfinished(take.file.path());
        QVERIFY(unfinished.open(QIODevice::ReadOnly));
        const QByteArray header = unfinished.readAll();
        while (take.pictures < 20)
            QCOMPARE(take.picture(), 0);
        QVERIFY(unfinished.seek(0));
        const QByteArray fragments = unfinished.readAll();
        QTemporaryDir media;
        const QDir video(media.filePath(QStringLiteral("CAMERA1/Video")));
        QVERIFY(video.mkpath(QStringLiteral(".")));
        const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(-60);
        const auto write = [&](const char* name, const QByteArray& bytes, bool isOld) {
            QFile file(video.filePath(QLatin1String(name)));
            return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() &&
                   file.flush() &&
                   (!isOld || file.setFileTime(before, QFileDevice::FileModificationTime));
        };
        QVERIFY(write("20260102030405.mp4", fragments, true) &&
                write("20260102030405-2.mp4", fragments.left(fragments.size() - 7), true) &&
                write("20260102030406.mp4", header, true) &&
                write("holiday.mp4", fragments, true) && write("20260102030407.mp4", "no", true));
        UnfinishedRecordings finishing(media.path());
        QVERIFY(write("20260102030408.mp4", fragments, false));  // it is being recorded
        finishing.start();
        finishing.waitForEnd();
        QCOMPARE(video.entryList(QDir::Files).size(), 5);
        QVERIFY(!video.exists(QStringLiteral("20260102030406.mp4")));
        for (const char* name : {"20260102030405.mp4", "20260102030405-2.mp4"}) {
            const QString path = video.filePath(QLatin1String(name));
            QCOMPARE(boxesOf(path), QByteArray("ftyp mdat moov"));
            QVERIFY(RecordingReader(path).decodesAllPictures());
        }
        for (const char* name : {"holiday.mp4", "20260102030408.mp4"}) {
            QFile same(video.filePath(QLatin1String(name)));
            QVERIFY(same.open(QIODevice::ReadOnly) && same.readAll() == fragments);
        }
    }

private:
    static int picturesBefore(const RecordedTrack& track, uint64_t end) {
        int whole = 0;
        size_t sample = 0;
        for (const RecordedTrack::Chunk& chunk : track.chunks) {
            uint64_t at = chunk.offset;
            for (uint32_t i = 0; i < chunk.samples; ++i)
                whole += (at += track.sizes[sample++]) <= end;
        }
        return whole;
    }
};

}  // namespace

static const orvelle::test::RegisterSuite<RecordingFileTest> kRegistered;

#include "recording_file_test.moc"
