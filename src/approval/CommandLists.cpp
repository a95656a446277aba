#include "approval/CommandLists.h"

namespace nibbo {

QStringList defaultTrustedCommands()
{
    return {QStringLiteral("git status"), QStringLiteral("git diff"), QStringLiteral("npm install"),
            QStringLiteral("pnpm install"), QStringLiteral("bun install")};
}

QStringList defaultDangerousCommands()
{
    return {QStringLiteral("rm -rf"),          QStringLiteral("sudo"),
            QStringLiteral("chmod 777"),       QStringLiteral("drop database"),
            QStringLiteral("delete database"), QStringLiteral("format disk")};
}

} // namespace nibbo
