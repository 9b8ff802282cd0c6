#pragma once

// The app's QML modules are static plugins: a program registers the types of
// the ones it links by importing them once, in the file that holds main().
// Resources comes with every screen; a program that links only some of the
// others names them before including this file (NORVELLA_QML_LISTS, ...), a
// program with the whole window defines NORVELLA_QML_ALL.

#include <QtQml/qqmlextensionplugin.h>

#ifdef NORVELLA_QML_ALL
#define NORVELLA_QML_APP
#define NORVELLA_QML_LISTS
#define NORVELLA_QML_CONJUGATION
#define NORVELLA_QML_EXPORT
#define NORVELLA_QML_SETTINGS
#define NORVELLA_QML_PRACTICE
#endif

Q_IMPORT_QML_PLUGIN(Norvella_ResourcesPlugin)
#ifdef NORVELLA_QML_APP
Q_IMPORT_QML_PLUGIN(Norvella_AppPlugin)
#endif
#ifdef NORVELLA_QML_LISTS
Q_IMPORT_QML_PLUGIN(Norvella_ListsPlugin)
#endif
#ifdef NORVELLA_QML_CONJUGATION
Q_IMPORT_QML_PLUGIN(Norvella_ConjugationPlugin)
#endif
#ifdef NORVELLA_QML_EXPORT
Q_IMPORT_QML_PLUGIN(Norvella_ExportPlugin)
#endif
#ifdef NORVELLA_QML_SETTINGS
Q_IMPORT_QML_PLUGIN(Norvella_SettingsPlugin)
#endif
#ifdef NORVELLA_QML_PRACTICE
Q_IMPORT_QML_PLUGIN(Norvella_PracticePlugin)
#endif
