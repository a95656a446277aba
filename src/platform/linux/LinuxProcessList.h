#pragma once

#include "platform/ProcessList.h"

namespace nibbo {

/// One pass over /proc. Only the processes of this user count: on a shared machine the agents of others are
/// none of the pet's business.
class LinuxProcessList final : public ProcessList
{
public:
    std::vector<RunningProcess> processes() override;
};

} // namespace nibbo
