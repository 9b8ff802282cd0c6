#include "PdfPages.h"

#include <QAbstractTextDocumentLayout>
#include <QBuffer>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QList>
#include <QPainter>
#include <QPdfWriter>
#include <QScreen>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextFrame>
#include <QTextTable>

#include <cmath>

namespace norvella::PdfPages {

namespace {

constexpr int Resolution = 300;
constexpr qreal MarginCm = 2.0;

// The resolution the text layout takes a format's lengths (a frame's margin,
// a CSS padding) to be given at: it scales them by the device's over this one,
// Qt's default, which follows the primary screen.
qreal layoutDpi()
{
    if (QCoreApplication::testAttribute(Qt::AA_Use96Dpi))
        return 96;
    const QScreen *screen = QGuiApplication::primaryScreen();
    return screen ? qRound(screen->logicalDotsPerInchY()) : 96;
}

// A table in the page flow and the heading that introduces it, if one does.
struct Unit
{
    QTextTable *table = nullptr;
    int headingPosition = -1;
};

struct Extent
{
    qreal top = qInf();
    qreal bottom = -qInf();
};

QList<Unit> unitsOf(QTextDocument &document)
{
    QList<Unit> units;
    int heading = -1;
    for (auto it = document.rootFrame()->begin(); !it.atEnd(); ++it) {
        if (auto *table = qobject_cast<QTextTable *>(it.currentFrame())) {
            units.append({table, heading});
            heading = -1;
        } else if (it.currentFrame()) {
            heading = -1;
        } else {
            const QTextBlock block = it.currentBlock();
            if (block.blockFormat().headingLevel() > 0)
                heading = block.position();
            // The empty blocks the HTML import leaves around tables do not part a heading from its table.
            else if (!block.text().trimmed().isEmpty())
                heading = -1;
        }
    }
    return units;
}

// Where the unit's lines are drawn, in document coordinates.
Extent extentOf(QTextDocument &document, const Unit &unit)
{
    QAbstractTextDocumentLayout *layout = document.documentLayout();
    const int first = unit.headingPosition >= 0 ? unit.headingPosition : unit.table->firstPosition();
    Extent extent;
    for (QTextBlock block = document.findBlock(first); block.isValid() && block.position() <= unit.table->lastPosition();
         block = block.next()) {
        if (block.layout()->lineCount() == 0 || block.text().isEmpty())
            continue;
        const QRectF rect = layout->blockBoundingRect(block);
        extent.top = std::min(extent.top, rect.top());
        extent.bottom = std::max(extent.bottom, rect.bottom());
    }
    return extent;
}

void breakBefore(QTextDocument &document, const Unit &unit)
{
    if (unit.headingPosition >= 0) {
        QTextCursor cursor(document.findBlock(unit.headingPosition));
        QTextBlockFormat format = cursor.blockFormat();
        format.setPageBreakPolicy(format.pageBreakPolicy() | QTextFormat::PageBreak_AlwaysBefore);
        cursor.setBlockFormat(format);
    } else {
        QTextTableFormat format = unit.table->format();
        format.setPageBreakPolicy(format.pageBreakPolicy() | QTextFormat::PageBreak_AlwaysBefore);
        unit.table->setFormat(format);
    }
}

// Measures each unit on the layout as it stands after the units before it
// moved: a break only ever pushes what follows it further down, so one pass
// in document order settles every page.
void keepUnitsWhole(QTextDocument &document, qreal pageHeight, qreal contentHeight)
{
    // The layout works lazily and, after a format change, redoes only the
    // changed blocks: it would leave blocks it never reached without lines. So
    // every measurement starts from a finished layout of the whole document.
    document.documentLayout()->pageCount();
    for (const Unit &unit : unitsOf(document)) {
        const Extent extent = extentOf(document, unit);
        if (extent.bottom <= extent.top)
            continue;
        const int firstPage = int(std::floor(extent.top / pageHeight));
        const int lastPage = int(std::floor((extent.bottom - 1) / pageHeight));
        if (firstPage == lastPage || extent.bottom - extent.top > contentHeight)
            continue;
        breakBefore(document, unit);
        document.markContentsDirty(0, document.characterCount());
        document.documentLayout()->pageCount();
    }
}

void drawPageNumber(QPainter &painter, const QTextDocument &document, int page, const QSizeF &pageSize,
                    qreal margin)
{
    painter.setFont(document.defaultFont());
    const QFontMetricsF metrics(painter.font(), painter.device());
    const QString number = QString::number(page + 1);
    const QPointF baseline(pageSize.width() - margin - metrics.horizontalAdvance(number),
                           pageSize.height() - margin + metrics.ascent() + 5.0 * painter.device()->logicalDpiY() / 72.0);
    painter.drawText(baseline, number);
}

// Paints each page of the laid-out document, its number below the text.
bool drawPages(QTextDocument &document, QPdfWriter &writer, qreal margin)
{
    QPainter painter;
    if (!painter.begin(&writer))
        return false;
    const QSizeF pageSize = document.pageSize();
    const int pages = document.pageCount();
    for (int page = 0; page < pages; ++page) {
        if (page > 0 && !writer.newPage())
            return false;
        const QRectF view(0, page * pageSize.height(), pageSize.width(), pageSize.height());
        painter.save();
        painter.translate(0, -view.top());
        painter.setClipRect(view);
        QAbstractTextDocumentLayout::PaintContext context;
        context.clip = view;
        // Paper is white whatever the screen's palette says.
        context.palette.setColor(QPalette::Text, Qt::black);
        document.documentLayout()->draw(&painter, context);
        painter.restore();
        drawPageNumber(painter, document, page, pageSize, margin);
    }
    return painter.end();
}

} // namespace

QByteArray render(const QString &html, const QPageSize &paper)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    bool drawn = false;
    {
        QPdfWriter writer(&buffer);
        writer.setPageSize(paper);
        // The margin belongs to the document, so that its layout knows the room each page has.
        writer.setPageMargins(QMarginsF(0, 0, 0, 0));
        writer.setResolution(Resolution);
        writer.setCreator(QStringLiteral("Norvella"));

        QTextDocument document;
        document.setHtml(html);
        writer.setTitle(document.metaInformation(QTextDocument::DocumentTitle));
        document.documentLayout()->setPaintDevice(&writer);
        const qreal margin = MarginCm / 2.54 * writer.logicalDpiY();
        QTextFrameFormat root = document.rootFrame()->frameFormat();
        root.setMargin(margin * layoutDpi() / writer.logicalDpiY());
        document.rootFrame()->setFrameFormat(root);
        document.setPageSize(QSizeF(writer.width(), writer.height()));
        keepUnitsWhole(document, writer.height(), writer.height() - 2 * margin);
        drawn = drawPages(document, writer, margin);
    }
    return drawn ? bytes : QByteArray();
}

} // namespace norvella::PdfPages
