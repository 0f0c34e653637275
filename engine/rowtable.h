#pragma once

#include "downloadrow.h"
#include "downloadslot.h"

#include <algorithm>
#include <array>
#include <memory>

// The rows of a list by slot; slot 0 is never used.
using RowTable = std::array<std::unique_ptr<DownloadRow>, SlotCount>;

// Rows in use, counting the unused slot 0 as the lists always have.
inline int rowCountOf(const RowTable &rows)
{
    return 1 + int(std::count_if(rows.begin() + 1, rows.end(),
                                 [](const auto &row) { return row != nullptr; }));
}

// The highest slot with a row, 0 when there is none.
inline int highestIndexOf(const RowTable &rows)
{
    for (int i = SlotCount - 1; i > 0; --i) {
        if (rows[i])
            return i;
    }
    return 0;
}
