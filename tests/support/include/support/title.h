// Names the rows of a table of cases by their field "title".
#ifndef SUPPORT_TITLE_H
#define SUPPORT_TITLE_H

#include <gtest/gtest.h>

#include <string>

namespace test_support {

// The last argument of INSTANTIATE_TEST_SUITE_P.
struct Title {
    template <typename Row>
    std::string operator()(const testing::TestParamInfo<Row> &row) const {
        return row.param.title;
    }
};

}  // namespace test_support

#endif  // SUPPORT_TITLE_H
