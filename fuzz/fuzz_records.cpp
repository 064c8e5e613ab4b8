// The calibration records (BiaoCeng.txt): any file is read without harm, and the reader that takes the file
// in pieces finds the same rows as the one that takes it whole.
#include "fuzz_support.h"

#include "calibration/cal_records.h"
#include "common/text_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzAppInit();
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    const OpRecords whole = ParseOpRecords(bytes);
    const OpRecords pieces = ReadOpRecords(FuzzFile(bytes, "BiaoCeng.txt"));
    FUZZ_CHECK(whole.rowCount() == pieces.rowCount());
    for (int r = 0; r < whole.rowCount(); ++r)
        for (int c = 0; c < OpRecords::kColumns; ++c)
            FUZZ_CHECK(whole.field(r, c) == pieces.field(r, c));
    const QString text = TextFile::decode(bytes);
    for (const QString& line : text.split(QLatin1Char('\n')))
        FUZZ_CHECK(!SplitListInput(line).isEmpty());
    return 0;
}
