// The messages of the statuses.
#include <set>

#include "support.h"

namespace {

TEST(Statuses, HaveMessagesOfTheirOwn)
{
    std::set<std::string> first{get_error_description(0), get_error_description(1)};
    std::set<std::string> second{"", tdms_status_text(0), tdms_status_text(1)};
    for (int status = TDMS_FILE_PATH; status >= TDMS_PROPERTY_BUFFER; --status) {
        const bool repeated_group = status == TDMS_GROUP_REPEATED;  // intended
        EXPECT_EQ(!repeated_group, first.insert(get_error_description(status)).second) << status;
        EXPECT_TRUE(second.insert(tdms_status_text(status)).second) << status;
    }
    for (int status = TDMS_ARGUMENT; status >= TDMS_DATATYPE; --status) {
        EXPECT_TRUE(second.insert(tdms_status_text(status)).second) << status;
    }
    EXPECT_TRUE(first.contains("file reads falied!")) << "programs may compare messages";
}

}  // namespace
