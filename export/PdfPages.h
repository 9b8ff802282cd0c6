#pragma once

#include <QByteArray>
#include <QPageSize>
#include <QString>

namespace norvella {

// The HTML export laid out on paper and drawn as PDF. Every table that sits
// directly in the page flow (in the export, one row of tenses) is kept on one
// page, together with a heading right above it: when it would cross the end of
// a page it starts the next one instead. One taller than a whole page is left
// to split between its lines. Pages carry a 2 cm margin and their number.
namespace PdfPages {

// The document's pages as a PDF file's bytes; empty when they cannot be drawn.
QByteArray render(const QString &html, const QPageSize &paper);

} // namespace PdfPages
} // namespace norvella
