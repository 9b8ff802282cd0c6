#pragma once

#include <QString>

#include <QJSEngine>

namespace norvella {

// The script engine one export renders in: a fresh one for every export, so
// nothing a template did survives into the next, with mustache.js loaded and
// its tokeniser made to search the template instead of copying it.
class ExportScriptEngine
{
public:
    explicit ExportScriptEngine(const QString &script);

    QJSEngine &engine() { return m_engine; }
    // False when the script raised an error; its message is already on the console.
    bool loaded() const { return m_loaded; }

    // Replaces mustache.js's tokeniser with one that gives the same tokens
    // without copying the template at every tag; an engine without
    // mustache.js is left alone.
    static void speedUpScanner(QJSEngine &engine);

private:
    QJSEngine m_engine;
    bool m_loaded = false;
};

} // namespace norvella
