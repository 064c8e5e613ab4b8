// Replies from the controller: whatever arrives on the line, the link takes it apart without harm,
// and a reply it accepts has the shape it promised.
#include "fuzz_support.h"

#include "common/module1.h"
#include "link/frame_codec.h"
#include "link/link_engine.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzAppInit();
    if (size < 1) return 0;
    // The first byte is the length the last request expects; the rest is what came back.
    const short expected = short(data[0]);
    const QString reply = QString::fromLatin1(reinterpret_cast<const char*>(data + 1), qsizetype(size - 1));
    StepNo = 444;  // nothing is re-sent: the retry finds no request of this step
    LinkEngine& link = Link();

    ExpectedReplyLen = expected;
    const QString payload = link.ReplyPayload(reply);
    if (!payload.isEmpty()) {
        FUZZ_CHECK(reply.size() == expected);
        FUZZ_CHECK(payload.size() == expected - 4);
        FUZZ_CHECK(reply.indexOf(QChar(2)) + 1 + payload.size() == reply.indexOf(QChar(3)));
    }
    // The payload's digits are not checked on the line (nor is the sum): any characters are decoded as
    // the controller's digits would be, and the word routine reads what is there and never beyond it.
    for (int i = 0; i <= payload.size() / 4 + 1; ++i)
        (void)GetWordFromPayload(i + 1, payload);
    for (int i = 0; i <= reply.size() / 4 + 1; ++i)
        (void)GetWordFromPayload(i + 1, reply);

    ExpectedReplyLen = expected;
    link.RetryCount = 0;
    const bool ack = link.AckOk(reply);
    FUZZ_CHECK(!ack || (reply.size() == expected && reply.at(0) == QChar(6)));
    return 0;
}
