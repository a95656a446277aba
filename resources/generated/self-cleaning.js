// Takes Nibbo's hooks out of the agents' files after the application was deleted.
(function () {
  const h = $.NSHomeDirectory().js;
  const m = 'nibbo-bridge';
  const files = ['@SHARED_FILES@'];

  function isOurs(value) {
    return value !== null && typeof value === 'object' && typeof value.command === 'string' && value.command.includes(m);
  }

  // What is left of an event's groups.
  function withoutOurs(groups) {
    return groups.filter(function (group) {
      if (isOurs(group)) return false;
      if (group === null || typeof group !== 'object' || !Array.isArray(group.hooks)) return true;
      const kept = group.hooks.filter(function (entry) { return !isOurs(entry); });
      if (kept.length === group.hooks.length) return true;
      group.hooks = kept;
      return kept.length > 0;
    });
  }

  // Whether some event has fewer groups than before.
  function clean(settings) {
    const hooks = settings === null ? undefined : settings.hooks;
    if (hooks === null || typeof hooks !== 'object' || Array.isArray(hooks)) return false;
    let changed = false;
    for (const event of Object.keys(hooks)) {
      if (!Array.isArray(hooks[event])) continue;
      const kept = withoutOurs(hooks[event]);
      if (kept.length < hooks[event].length) changed = true;
      hooks[event] = kept;
      if (kept.length === 0) delete hooks[event];
    }
    if (Object.keys(hooks).length === 0) delete settings.hooks;
    return changed;
  }

  for (const file of files) {
    try {
      // The file that a link points to, so that the link stays one.
      const path = $(h + '/' + file).stringByResolvingSymlinksInPath;
      const text = $.NSString.stringWithContentsOfFileEncodingError(path, 4, null).js;
      if (!text) continue;
      const settings = JSON.parse(text);
      if (clean(settings)) {
        $(JSON.stringify(settings, null, 2) + '\n').writeToFileAtomicallyEncodingError(path, true, 4, null);
      }
    } catch (error) {
      // Missing, or not JSON: not ours to touch.
    }
  }

  '@REMOVE_OWNED_FILES@';
})();
