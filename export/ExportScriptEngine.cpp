#include "ExportScriptEngine.h"

#include "CrashLog.h"

#include <QDebug>

namespace norvella {

namespace {

// mustache.js tokenises by cutting the rest of the template off after every
// tag (`tail = tail.substring(...)`). The engine copies each cut, and as the
// copies are not its own heap they count against a small allowance that sets
// off a full collection every few tags: 157 collections for one parse of
// the HTML template, 4 with this scanner. These scanner methods keep the contract (same
// positions, same matches, `tail` still readable) while searching the one
// string from the current position. A script without mustache's Scanner is
// left as it is.
constexpr char16_t scannerScript[] = uR"js(
(function () {
    if (typeof Mustache !== 'object' || !Mustache || typeof Mustache.Scanner !== 'function')
        return;
    var prototype = Mustache.Scanner.prototype;
    // A search from a position wants the global flag; each of mustache's
    // patterns gets that copy once. RegExp(re, flags) keeps the pattern
    // intact, where its `source` text would not survive a round trip here.
    function fromPosition(re) {
        if (!Object.prototype.hasOwnProperty.call(re, 'norvellaGlobal'))
            Object.defineProperty(re, 'norvellaGlobal', {value: new RegExp(re, 'g')});
        return re.norvellaGlobal;
    }
    function firstMatch(scanner, re) {
        var global = fromPosition(re);
        global.lastIndex = scanner.pos;
        return global.exec(scanner.string);
    }
    Object.defineProperty(prototype, 'tail', {
        configurable: true,
        get: function () { return this.string.substring(this.pos); },
        set: function () {}
    });
    prototype.eos = function eos() {
        return this.pos >= this.string.length;
    };
    prototype.scan = function scan(re) {
        var match = firstMatch(this, re);
        if (!match || match.index !== this.pos)
            return '';
        this.pos += match[0].length;
        return match[0];
    };
    prototype.scanUntil = function scanUntil(re) {
        var match = firstMatch(this, re);
        var end = match ? match.index : this.string.length;
        var skipped = this.string.substring(this.pos, end);
        this.pos = end;
        return skipped;
    };
})();
)js";

bool evaluateScript(QJSEngine &engine, const QString &script)
{
    const QJSValue loaded = engine.evaluate(script);
    if (loaded.isError()) {
        qWarning().noquote() << QStringLiteral("JS Error: ") + loaded.toString();
        return false;
    }
    ExportScriptEngine::speedUpScanner(engine);
    return true;
}

} // namespace

ExportScriptEngine::ExportScriptEngine(const QString &script)
{
    m_loaded = evaluateScript(m_engine, script);
}

void ExportScriptEngine::speedUpScanner(QJSEngine &engine)
{
    const QJSValue patched = engine.evaluate(QString::fromUtf16(scannerScript));
    if (patched.isError())
        CrashLog::log(QStringLiteral("The export keeps mustache's own scanner: ") + patched.toString());
}

} // namespace norvella
