#include "ExportScriptEngine.h"

#include "CrashLog.h"

#include <QCoreApplication>
#include <QDebug>
#include <QJSEngine>
#include <QPointer>
#include <QThread>

namespace norvella {

namespace {

struct KeptEngine
{
    // Owned by the application object, so it goes before the application does.
    QPointer<QJSEngine> engine;
    QString script;
};

KeptEngine &kept()
{
    static KeptEngine engine;
    return engine;
}

bool onApplicationThread()
{
    const QCoreApplication *application = QCoreApplication::instance();
    return application && QThread::currentThread() == application->thread();
}

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
    if (!onApplicationThread()) {
        m_ownEngine = std::make_unique<QJSEngine>();
        m_engine = m_ownEngine.get();
        m_loaded = evaluateScript(*m_engine, script);
        return;
    }
    KeptEngine &keptEngine = kept();
    m_kept = true;
    if (keptEngine.engine && keptEngine.script == script) {
        m_engine = keptEngine.engine;
        m_loaded = true;
        return;
    }
    delete keptEngine.engine;
    keptEngine.engine = new QJSEngine(QCoreApplication::instance());
    keptEngine.script = script;
    m_engine = keptEngine.engine;
    m_loaded = evaluateScript(*m_engine, script);
    // A script that failed is loaded again, whole, by the next export.
    m_discard = !m_loaded;
}

void ExportScriptEngine::speedUpScanner(QJSEngine &engine)
{
    const QJSValue patched = engine.evaluate(QString::fromUtf16(scannerScript));
    if (patched.isError())
        CrashLog::log(QStringLiteral("The export keeps mustache's own scanner: ") + patched.toString());
}

ExportScriptEngine::~ExportScriptEngine()
{
    if (m_kept && m_discard) {
        KeptEngine &keptEngine = kept();
        delete keptEngine.engine;
        keptEngine.script.clear();
    }
}

} // namespace norvella
