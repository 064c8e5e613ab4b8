#pragma once
// The blocks on the controller's line, each moved with the frames the console's forms send for it: the same
// devices and word counts, one request at a time, re-sent as the console re-sends.
#include "common/block_layout.h"
#include "link/request_line.h"

#include <QList>
#include <QString>
#include <functional>

class PlantLink {
public:
    explicit PlantLink(CommPort* port);  // an open port, not owned

    // The words of a block as the controller holds them; false on a link fault.
    bool read(const BlockLayout& l, QList<int>* raw);

    enum class Written { Done, LinkFault, NotTaken };
    // Writes the block's words that a restore writes (`written`) from raw. A bit group and a block that goes
    // out with words a restore does not write are read right before, so that what is not the file's goes
    // back as the controller holds it at that moment. Then the block is read back and compared.
    Written write(const BlockLayout& l, const QList<int>& raw);

    // Every frame as it goes out, and every reply taken: for the benchmark's wire time.
    RequestLine& line() { return line_; }

private:
    std::optional<QString> ask(const QString& frame, bool longAckWaits = false);

    RequestLine line_;
};

// Whether the words a restore writes agree: a bit group by its own bits, a block by its written words.
bool WrittenWordsEqual(const BlockLayout& l, const QList<int>& a, const QList<int>& b);
