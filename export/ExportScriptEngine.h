#pragma once

#include <QString>

#include <memory>

class QJSEngine;

namespace norvella {

// The script engine one export renders in. mustache.js keeps the tokens of
// every template it has parsed, keyed by the template's text; a fresh engine
// throws them away and tokenises both templates again in an interpreter that
// has not warmed up, which cost nine tenths of an export. So the
// application's thread keeps one engine with the script loaded, for as long
// as the script text stays the same and no evaluation in it has failed.
// Other threads get an engine of their own for each export.
class ExportScriptEngine
{
public:
    // Evaluates `script` unless the kept engine already holds that very text.
    explicit ExportScriptEngine(const QString &script);
    ~ExportScriptEngine();
    ExportScriptEngine(const ExportScriptEngine &) = delete;
    ExportScriptEngine &operator=(const ExportScriptEngine &) = delete;

    QJSEngine &engine() { return *m_engine; }
    // False when the script raised an error; its message is already on the console.
    bool loaded() const { return m_loaded; }
    // Something went wrong in this engine: the next export starts afresh, so
    // nothing half-done survives into it.
    void discard() { m_discard = true; }

    // Replaces mustache.js's tokeniser with one that gives the same tokens
    // without copying the template at every tag; an engine without
    // mustache.js is left alone.
    static void speedUpScanner(QJSEngine &engine);

private:
    QJSEngine *m_engine = nullptr;
    std::unique_ptr<QJSEngine> m_ownEngine;
    bool m_kept = false;
    bool m_loaded = false;
    bool m_discard = false;
};

} // namespace norvella
