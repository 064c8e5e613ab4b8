#include "params/limits.h"

namespace {
template <size_t N> LimitTexts textsOf(const std::array<Limit, N>& row)
{
    LimitTexts t;
    for (const Limit& l : row) {
        t.low << QString::fromUtf8(l.low);
        t.high << QString::fromUtf8(l.high);
        t.deflt << QString::fromUtf8(l.deflt);
    }
    return t;
}
}  // namespace

LimitTexts LoadLimits(int scaleNo)
{
    if (scaleNo < 0 || scaleNo >= int(kKindOfScale.size()))
        return {};
    return textsOf(kLimitsByKind[size_t(kKindOfScale[size_t(scaleNo)])]);
}

LimitTexts LoadLimitsAG() { return textsOf(kLimitsAG); }
