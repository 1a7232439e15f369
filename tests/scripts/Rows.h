// Table-driven checks: each row holds an input and the result expected of it, and a row that
// fails is named by its place in the table and its input.
#pragma once

#include <cstddef>
#include <gtest/gtest.h>
#include <vector>

namespace minihost::rows {

template <class In, class Out>
struct Row {
    In in;
    Out out;
};

// Expects give(row.in) == row.out for every row, in order.
template <class In, class Out, class Give>
void Expect(std::vector<Row<In, Out>> const& rows, Give give) {
    for (std::size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(give(rows[i].in), rows[i].out)
            << "row " << i << ": " << ::testing::PrintToString(rows[i].in);
    }
}

}  // namespace minihost::rows
