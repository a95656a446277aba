#include "hooks/InstallQuestion.h"

#include "agents/ProviderRegistry.h"
#include "hooks/HookInstaller.h"

namespace nibbo {

InstallQuestion installQuestion(const HookInstaller& installer, AppLanguage language)
{
    QStringList files;
    for (const ProviderSpec& spec : ProviderRegistry::all()) {
        if (installer.isEnabled(spec))
            files += QStringLiteral("  • ~/") + spec.configRelativePath;
    }
    const QString before =
        text(language, u"This backs up, then modifies the configs for your enabled agents:\n",
             u"将先备份、再修改已启用 agent 的配置：\n");
    const QString after = text(language,
                               u"\n\nA timestamped backup is saved under Nibbo's Application Support → "
                               u"Backups, and you can remove the "
                               u"bridge anytime from Settings. Your CLIs keep working even when Nibbo is "
                               u"closed (the bridge fails open).",
                               u"\n\n带时间戳的备份保存在 Nibbo 的 Application Support → "
                               u"Backups，你随时可在设置里移除桥接。即使 Nibbo "
                               u"关闭，你的 CLI 仍可正常工作（桥接失败时放行）。");
    return {text(language, u"Install Nibbo hook bridge?", u"安装 Nibbo hook 桥接？"),
            before + files.join(QLatin1Char('\n')) + after, text(language, u"Install", u"安装")};
}

} // namespace nibbo
