#pragma once

#include <QString>

#include <vector>

namespace nibbo {

/// One running process as the system's process table shows it.
struct RunningProcess
{
    qint64 id = 0;
    /// The whole command line, its arguments parted by single blanks.
    QString commandLine;

    bool operator==(const RunningProcess&) const = default;
};

/// The system's process table. Any thread.
class ProcessList
{
public:
    virtual ~ProcessList() = default;
    /// The processes of this user, without kernel threads; an empty list where nothing can be read.
    virtual std::vector<RunningProcess> processes() = 0;
};

} // namespace nibbo
