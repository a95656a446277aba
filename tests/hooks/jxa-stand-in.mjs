// Runs a macOS automation script, read from standard input, with as much of the two bridge objects as ours uses.
// `$` makes strings of the system and finds its classes; those strings give their text through `js`.
import fs from 'node:fs';
import vm from 'node:vm';

class SystemString {
  constructor(text) {
    this.js = text;
  }
  get stringByResolvingSymlinksInPath() {
    try {
      return new SystemString(fs.realpathSync(this.js));
    } catch {
      return new SystemString(this.js);
    }
  }
  writeToFileAtomicallyEncodingError(path, atomically, encoding) {
    if (atomically !== true || encoding !== 4) throw new Error('not written atomically as UTF-8');
    const { mode } = fs.statSync(textOf(path));
    const temporary = textOf(path) + '.atomic';
    fs.writeFileSync(temporary, this.js, { mode });
    fs.chmodSync(temporary, mode);
    fs.renameSync(temporary, textOf(path)); // like the system: a link in this place would be replaced
    return true;
  }
}

function textOf(value) {
  return value instanceof SystemString ? value.js : String(value);
}

const $ = (text) => new SystemString(text);
$.NSHomeDirectory = () => new SystemString(process.env.HOME);
$.NSString = {
  stringWithContentsOfFileEncodingError(path, encoding) {
    if (encoding !== 4) throw new Error('not read as UTF-8');
    try {
      // The mark at the start of a file is part of the text there.
      const decoder = new TextDecoder('utf-8', { fatal: true, ignoreBOM: true });
      return new SystemString(decoder.decode(fs.readFileSync(textOf(path))));
    } catch {
      return { js: undefined };
    }
  },
};
$.NSFileManager = {
  defaultManager: {
    removeItemAtPathError(path) {
      try {
        fs.rmSync(textOf(path), { recursive: true });
        return true;
      } catch {
        return false;
      }
    },
  },
};

vm.runInNewContext(fs.readFileSync(0, 'utf8'), { $ });
