#include "PropertyList.h"

#include <QList>
#include <QXmlStreamReader>

#include <vector>

namespace norvella {

namespace {

// A reference can be shared, so a small file can still describe a huge tree;
// a settings list has a few dozen nodes.
constexpr quint64 MaxVisits = 100000;

bool fail(QString *error, const QString &why)
{
    if (error)
        *error = why;
    return false;
}

QString tooDeep()
{
    return QStringLiteral("nested deeper than %1 levels").arg(PropertyList::MaxDepth);
}

// --- XML ---------------------------------------------------------------------

bool isContainer(QStringView name)
{
    return name == u"dict" || name == u"array";
}

bool isValue(QStringView name)
{
    static const QStringList values{QStringLiteral("dict"),    QStringLiteral("array"), QStringLiteral("string"),
                                    QStringLiteral("integer"), QStringLiteral("real"),  QStringLiteral("true"),
                                    QStringLiteral("false"),   QStringLiteral("date"),  QStringLiteral("data")};
    return values.contains(name);
}

// Well-formed, made only of property-list elements in their places, and no
// deeper than the limit; the reader is iterative, so depth cannot hurt it.
bool checkXml(const QByteArray &data, QString *error)
{
    if (data.contains('\0'))
        return fail(error, QStringLiteral("XML holding a NUL byte"));
    struct Level
    {
        QString name;
        int children = 0;
    };
    QList<Level> open;
    int containers = 0;
    bool sawRoot = false;
    QXmlStreamReader xml(data);
    while (!xml.atEnd()) {
        switch (xml.readNext()) {
        case QXmlStreamReader::DTD:
            if (!xml.entityDeclarations().isEmpty())
                return fail(error, QStringLiteral("XML declaring entities"));
            break;
        case QXmlStreamReader::EntityReference:
            return fail(error, QStringLiteral("XML with an undeclared entity"));
        case QXmlStreamReader::StartElement: {
            const QString name = xml.name().toString();
            if (open.isEmpty()) {
                if (sawRoot || name != QLatin1String("plist"))
                    return fail(error, QStringLiteral("XML whose root is not <plist>"));
                sawRoot = true;
            } else {
                Level &parent = open.last();
                const bool inDict = parent.name == QLatin1String("dict");
                if (parent.name == QLatin1String("plist") ? parent.children > 0 : !isContainer(parent.name))
                    return fail(error, QStringLiteral("<%1> inside <%2>").arg(name, parent.name));
                if (inDict && (parent.children % 2 == 0) != (name == QLatin1String("key")))
                    return fail(error, QStringLiteral("a <dict> whose entries are not key and value pairs"));
                if (!inDict && name == QLatin1String("key"))
                    return fail(error, QStringLiteral("<key> outside a <dict>"));
                if (name != QLatin1String("key") && !isValue(name))
                    return fail(error, QStringLiteral("unknown element <%1>").arg(name));
                ++parent.children;
            }
            if (isContainer(name) && ++containers > PropertyList::MaxDepth)
                return fail(error, tooDeep());
            open.append({name, 0});
            break;
        }
        case QXmlStreamReader::EndElement: {
            const Level closed = open.takeLast();
            if (isContainer(closed.name))
                --containers;
            if (closed.name == QLatin1String("dict") && closed.children % 2 != 0)
                return fail(error, QStringLiteral("a <dict> key without a value"));
            break;
        }
        default:
            break;
        }
    }
    if (xml.hasError())
        return fail(error, QStringLiteral("malformed XML at line %1 (%2)").arg(xml.lineNumber()).arg(xml.errorString()));
    if (!sawRoot)
        return fail(error, QStringLiteral("XML without a <plist> element"));
    return true;
}

// --- binary ------------------------------------------------------------------

quint64 readBigEndian(const uchar *p, int size)
{
    quint64 value = 0;
    for (int i = 0; i < size; ++i)
        value = (value << 8) | p[i];
    return value;
}

// Walks the trailer, the offset table and every object reachable from the top
// with bounds checks, without recursion, before libplist is allowed to.
class BinaryCheck
{
public:
    explicit BinaryCheck(const QByteArray &data)
        : m_data(reinterpret_cast<const uchar *>(data.constData())), m_size(quint64(data.size()))
    {
    }

    bool run(QString *error);

private:
    struct Object
    {
        int type = 0;
        quint64 count = 0;    // elements of an array, pairs of a dict
        quint64 payload = 0;  // where an array's or a dict's references start
    };
    struct Frame
    {
        quint64 index;
        Object object;
        quint64 next = 0;
    };

    bool read(quint64 index, Object *object, QString *error) const;
    bool count(quint64 at, int info, quint64 *value, quint64 *payload, QString *error) const;
    bool fits(quint64 at, quint64 units, quint64 unitSize) const
    {
        return at <= m_tableOffset && units <= (m_tableOffset - at) / unitSize;
    }
    quint64 reference(const Frame &frame, quint64 position) const
    {
        return readBigEndian(m_data + frame.object.payload + position * m_refSize, m_refSize);
    }

    const uchar *m_data;
    quint64 m_size;
    int m_offsetSize = 0;
    int m_refSize = 0;
    quint64 m_objects = 0;
    quint64 m_tableOffset = 0;
};

bool BinaryCheck::run(QString *error)
{
    constexpr quint64 Header = 8, Trailer = 32;
    if (m_size < Header + 1 + Trailer)
        return fail(error, QStringLiteral("a binary list too short for its trailer"));
    const uchar *trailer = m_data + m_size - Trailer;
    m_offsetSize = trailer[6];
    m_refSize = trailer[7];
    m_objects = readBigEndian(trailer + 8, 8);
    const quint64 top = readBigEndian(trailer + 16, 8);
    m_tableOffset = readBigEndian(trailer + 24, 8);
    const auto sizeOk = [](int size) { return size == 1 || size == 2 || size == 4 || size == 8; };
    if (!sizeOk(m_offsetSize) || !sizeOk(m_refSize))
        return fail(error, QStringLiteral("a binary list with an unsupported offset or reference size"));
    if (m_tableOffset < Header + 1 || m_tableOffset > m_size - Trailer || m_objects == 0 || top >= m_objects
        || m_objects > (m_size - Trailer - m_tableOffset) / quint64(m_offsetSize))
        return fail(error, QStringLiteral("a binary list whose offset table is out of range"));

    std::vector<bool> onPath(m_objects, false);
    std::vector<Frame> path;
    quint64 visits = 1;
    Object root;
    if (!read(top, &root, error))
        return false;
    if (root.type == 0xA || root.type == 0xD) {
        path.push_back({top, root});
        onPath[top] = true;
    }
    while (!path.empty()) {
        Frame &frame = path.back();
        const bool dict = frame.object.type == 0xD;
        const quint64 children = dict ? frame.object.count * 2 : frame.object.count;
        if (frame.next == children) {
            onPath[frame.index] = false;
            path.pop_back();
            continue;
        }
        const quint64 position = frame.next++;
        const quint64 child = reference(frame, position);
        if (child >= m_objects)
            return fail(error, QStringLiteral("a binary list with a reference out of range"));
        if (onPath[child])
            return fail(error, QStringLiteral("a binary list containing itself"));
        if (++visits > MaxVisits)
            return fail(error, QStringLiteral("a binary list with more than %1 nodes").arg(MaxVisits));
        Object object;
        if (!read(child, &object, error))
            return false;
        if (dict && position < frame.object.count && object.type != 0x5 && object.type != 0x6)
            return fail(error, QStringLiteral("a binary dictionary with a key that is not a string"));
        if (object.type == 0xA || object.type == 0xD) {
            if (path.size() >= std::size_t(PropertyList::MaxDepth))
                return fail(error, tooDeep());
            path.push_back({child, object});
            onPath[child] = true;
        }
    }
    return true;
}

// The length that follows a marker: in its low four bits, or for 0xF in the
// integer object after it.
bool BinaryCheck::count(quint64 at, int info, quint64 *value, quint64 *payload, QString *error) const
{
    if (info != 0xF) {
        *value = quint64(info);
        *payload = at + 1;
        return true;
    }
    if (at + 2 > m_tableOffset || (m_data[at + 1] >> 4) != 0x1 || (m_data[at + 1] & 0xF) > 3)
        return fail(error, QStringLiteral("a binary list with a malformed length"));
    const int bytes = 1 << (m_data[at + 1] & 0xF);
    if (!fits(at + 2, quint64(bytes), 1))
        return fail(error, QStringLiteral("a binary list with a length out of range"));
    *value = readBigEndian(m_data + at + 2, bytes);
    *payload = at + 2 + quint64(bytes);
    return true;
}

bool BinaryCheck::read(quint64 index, Object *object, QString *error) const
{
    const quint64 at = readBigEndian(m_data + m_tableOffset + index * quint64(m_offsetSize), m_offsetSize);
    if (at < 8 || at >= m_tableOffset)
        return fail(error, QStringLiteral("a binary list with an object offset out of range"));
    const int type = m_data[at] >> 4;
    const int info = m_data[at] & 0xF;
    const QString outOfRange = QStringLiteral("a binary list with an object running past its end");
    object->type = type;
    switch (type) {
    case 0x0: // only true and false: null, fill and the rest are no settings
        return info == 0x8 || info == 0x9 ? true : fail(error, QStringLiteral("a binary list with an unsupported value"));
    case 0x1: // integer of 1, 2, 4, 8 or 16 bytes
        if (info > 4)
            return fail(error, QStringLiteral("a binary list with a malformed integer"));
        return fits(at + 1, 1u << info, 1) ? true : fail(error, outOfRange);
    case 0x2: // real of 4 or 8 bytes
        if (info != 2 && info != 3)
            return fail(error, QStringLiteral("a binary list with a malformed real"));
        return fits(at + 1, 1u << info, 1) ? true : fail(error, outOfRange);
    case 0x3:
        if (info != 3)
            return fail(error, QStringLiteral("a binary list with a malformed date"));
        return fits(at + 1, 8, 1) ? true : fail(error, outOfRange);
    default:
        break;
    }

    quint64 length = 0, payload = 0;
    if (!count(at, info, &length, &payload, error))
        return false;
    switch (type) {
    case 0x4:
        return fits(payload, length, 1) ? true : fail(error, outOfRange);
    case 0x5:
        if (!fits(payload, length, 1))
            return fail(error, outOfRange);
        for (quint64 i = 0; i < length; ++i) {
            if (m_data[payload + i] == 0)
                return fail(error, QStringLiteral("a binary list with a string holding a NUL"));
        }
        return true;
    case 0x6: {
        if (!fits(payload, length, 2))
            return fail(error, outOfRange);
        bool expectLow = false;
        for (quint64 i = 0; i < length; ++i) {
            const quint64 unit = readBigEndian(m_data + payload + 2 * i, 2);
            if (unit == 0)
                return fail(error, QStringLiteral("a binary list with a string holding a NUL"));
            const bool high = unit >= 0xD800 && unit <= 0xDBFF;
            const bool low = unit >= 0xDC00 && unit <= 0xDFFF;
            if (low != expectLow)
                return fail(error, QStringLiteral("a binary list with a malformed UTF-16 string"));
            expectLow = high;
        }
        return expectLow ? fail(error, QStringLiteral("a binary list with a malformed UTF-16 string")) : true;
    }
    case 0xA:
    case 0xD:
        if (!fits(payload, length, quint64(m_refSize) * (type == 0xD ? 2 : 1)))
            return fail(error, outOfRange);
        object->count = length;
        object->payload = payload;
        return true;
    default:
        return fail(error, QStringLiteral("a binary list with an unsupported object (marker 0x%1)")
                                   .arg(m_data[at], 2, 16, QLatin1Char('0')));
    }
}

} // namespace

bool PropertyList::check(const QByteArray &data, QString *error)
{
    if (data.isEmpty())
        return fail(error, QStringLiteral("an empty file"));
    if (data.size() > MaxSize)
        return fail(error, QStringLiteral("larger than %1 bytes, so not a settings file").arg(MaxSize));
    if (data.startsWith("bplist00"))
        return BinaryCheck(data).run(error);
    if (data.startsWith("bplist"))
        return fail(error, QStringLiteral("an unsupported binary list version"));
    return checkXml(data, error);
}

} // namespace norvella
