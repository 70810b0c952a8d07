#include "pelk/host/picture/file_envelope.h"

#include <gmock/gmock.h>

#include <cstring>

#include "temporary_directory.h"

namespace Tarnkit {
namespace {

class FileEnvelopeTest : public testing::Test {
protected:
    FileEnvelopeTest() {
        std::string error;
        const auto write = [](PayloadWriter& out) {
            out.write("pay", 3);
            out.write("load", 4);
        };
        EXPECT_TRUE(writeEnvelope(dir.file("a.pkr"), header, write, error)) << error;
        whole = dir.read("a.pkr");
        headerBytes = whole.size() - 7;
    }

    /// What is wrong with a file of these bytes; empty if nothing is.
    std::string problemOf(const std::string& bytes, FileKind kind = FileKind::Region) {
        dir.write("b.pkr", bytes);
        EnvelopeReader file(dir.file("b.pkr"));
        if (!file.readHeader(kind) || !file.checkPayload())
            return file.getError() + (file.isSystemFault() ? " (try again)" : "");
        payload.resize(file.left());
        EXPECT_TRUE(file.read(payload.data(), payload.size()) && !file.read(&payload[0], 1));
        read = file.getHeader();
        return {};
    }

    static FileHeader anyHeader() {
        FileHeader header;
        header.fingerprint = {0x0123456789abcdef, 0xfedcba9876543210};
        header.width = 640;
        header.height = 480;
        header.rect = {0, 10, 640, 30};
        header.samplesAsked = header.samplesMost = 63;
        header.samplesLeast = 16;
        header.halfFloat = true;
        header.scene += "a \xff scene";
        header.channels = {{2, 126, "beauty"}, {4, -1, ""}};
        header.parts = {{{0, 10, 640, 20}, 2, 48, 1.5, "one"}, {{0, 20, 640, 30}, 0, 0, 0.25, ""}};
        return header;
    }

    TemporaryDirectory dir;
    FileHeader header = anyHeader();
    std::string whole, payload;
    std::size_t headerBytes = 0;
    FileHeader read;
};

TEST_F(FileEnvelopeTest, AllThatWasWrittenComesBack) {
    EXPECT_EQ(problemOf(whole), "");
    EXPECT_EQ(payload, "payload");
    header.payloadSize = 7;
    header.payloadChecksum = read.payloadChecksum;
    EXPECT_EQ(read, header);
    EXPECT_EQ(read.seconds(), 1.75);
    // The places that docs/region-file.md names.
    const int places[][2] = {{24, 7}, {56, 640}, {68, 10}, {88, 63}, {100, 9}};
    for (const auto& [place, value] : places) {
        int found = 0;
        std::memcpy(&found, &whole[place], 4);
        EXPECT_EQ(found, value) << place;
    }
    EXPECT_EQ(read.fingerprint.toText(), "fedcba98765432100123456789abcdef");
}

TEST_F(FileEnvelopeTest, AnyCutAndAnyFlippedBitIsFound) {
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_THAT(problemOf(whole.substr(0, size)), testing::HasSubstr("b.pkr")) << size;
    EXPECT_NE(problemOf(whole + "x"), "");
    std::vector<unsigned char> bytes(whole.begin(), whole.begin() + headerBytes);
    std::string error;
    for (std::size_t bit = 0; bit < bytes.size() * 8; ++bit) {
        bytes[bit / 8] ^= static_cast<unsigned char>(1 << bit % 8);
        EXPECT_FALSE(decodeHeader(bytes, read, error)) << bit;
        bytes[bit / 8] ^= static_cast<unsigned char>(1 << bit % 8);
    }
    for (std::size_t place = 0; place < whole.size(); ++place) {
        std::string flipped = whole;
        flipped[place] = static_cast<char>(flipped[place] ^ 1 << place % 8);
        EXPECT_THAT(problemOf(flipped), testing::HasSubstr("b.pkr")) << place;
    }
    EXPECT_THAT(problemOf(whole, FileKind::Checkpoint), testing::HasSubstr("no checkpoint"));
    EnvelopeReader directory(dir.path.string());
    EXPECT_FALSE(directory.readHeader(FileKind::Region));
    EXPECT_THAT(directory.getError(), testing::HasSubstr("no plain file"));
}

// A check sum keeps out damage, not somebody who computes it as well.
TEST_F(FileEnvelopeTest, AHeaderThatDescribesNoPictureIsRefused) {
    const auto accepts = [&](auto change) {
        FileHeader changed = header;
        change(changed);
        std::string error;
        return decodeHeader(encodeHeader(changed), read, error);
    };
    EXPECT_TRUE(accepts([](FileHeader&) {}));
    EXPECT_FALSE(accepts([](FileHeader& h) { h.width = 639; })) << "narrower than its rectangle";
    EXPECT_FALSE(accepts([](FileHeader& h) { h.width = h.height = 65536; })) << "2^32 pixels";
    EXPECT_FALSE(accepts([](FileHeader& h) { h.rect.y1 = h.rect.y0; }));
    EXPECT_FALSE(accepts([](FileHeader& h) { h.rect.x0 = -1; }));
    EXPECT_FALSE(accepts([](FileHeader& h) { h.samplesLeast = 64; })) << "more than the most";
    EXPECT_FALSE(accepts([](FileHeader& h) { h.kind = FileKind{3}; }));
    EXPECT_FALSE(accepts([](FileHeader& h) { h.channels[1].type = 7; }));
    EXPECT_FALSE(accepts([](FileHeader& h) { h.parts[0].rect.y0 = 9; })) << "outside";
    EXPECT_FALSE(accepts([](FileHeader& h) { h.parts[1].tile = 1; })) << "of no tiles";
    EXPECT_FALSE(accepts([](FileHeader& h) { h.parts[0].seconds = -1; }));
}

}  // namespace
}  // namespace Tarnkit
