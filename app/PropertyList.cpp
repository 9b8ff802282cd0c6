#include "PropertyList.h"

#include <QDateTime>
#include <QFile>
#include <QVariantList>
#include <QVariantMap>

#include <plist/plist.h>

#include <cstdlib>

namespace norvella {

namespace {

// The check bounds the depth already; the conversion keeps its own count so it
// can never recurse without limit, whatever libplist hands back.
class Converter
{
public:
    QVariant convert(plist_t node, int depth);
    bool failed = false;

private:
    QVariant convertContainer(plist_t node, int depth);
};

QVariant Converter::convert(plist_t node, int depth)
{
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        uint8_t value = 0;
        plist_get_bool_val(node, &value);
        return QVariant(value != 0);
    }
    case PLIST_UINT: {
        uint64_t value = 0;
        plist_get_uint_val(node, &value);
        return QVariant::fromValue(qint64(value));
    }
    case PLIST_REAL: {
        double value = 0;
        plist_get_real_val(node, &value);
        return QVariant(value);
    }
    case PLIST_STRING: {
        char *value = nullptr;
        plist_get_string_val(node, &value);
        QString text = QString::fromUtf8(value);
        std::free(value);
        return QVariant(text);
    }
    case PLIST_DATA: {
        char *value = nullptr;
        uint64_t length = 0;
        plist_get_data_val(node, &value, &length);
        QByteArray bytes(value, qsizetype(length));
        std::free(value);
        return QVariant(bytes);
    }
    case PLIST_DATE: {
        int32_t sec = 0, usec = 0;
        plist_get_date_val(node, &sec, &usec);
        // Property-list dates count from 2001-01-01.
        const QDateTime epoch2001(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC);
        return QVariant(epoch2001.addMSecs(qint64(sec) * 1000 + usec / 1000));
    }
    case PLIST_ARRAY:
    case PLIST_DICT:
        return convertContainer(node, depth + 1);
    default:
        return {};
    }
}

QVariant Converter::convertContainer(plist_t node, int depth)
{
    if (depth > PropertyList::MaxDepth) {
        failed = true;
        return {};
    }
    if (plist_get_node_type(node) == PLIST_ARRAY) {
        QVariantList list;
        const uint32_t size = plist_array_get_size(node);
        for (uint32_t i = 0; i < size && !failed; ++i)
            list << convert(plist_array_get_item(node, i), depth);
        return list;
    }
    QVariantMap map;
    plist_dict_iter iter = nullptr;
    plist_dict_new_iter(node, &iter);
    char *key = nullptr;
    plist_t value = nullptr;
    for (plist_dict_next_item(node, iter, &key, &value); key; plist_dict_next_item(node, iter, &key, &value)) {
        if (!failed)
            map.insert(QString::fromUtf8(key), convert(value, depth));
        std::free(key);
        key = nullptr;
    }
    std::free(iter);
    return map;
}

} // namespace

std::optional<QVariant> PropertyList::fromData(const QByteArray &data, QString *error)
{
    QString problem;
    if (!check(data, &problem)) {
        if (error)
            *error = problem;
        return std::nullopt;
    }
    plist_t root = nullptr;
    if (data.startsWith("bplist00"))
        plist_from_bin(data.constData(), uint32_t(data.size()), &root);
    else
        plist_from_xml(data.constData(), uint32_t(data.size()), &root);
    if (!root) {
        if (error)
            *error = QStringLiteral("not a property list");
        return std::nullopt;
    }
    Converter converter;
    QVariant value = converter.convert(root, 0);
    plist_free(root);
    if (converter.failed) {
        if (error)
            *error = QStringLiteral("nested deeper than %1 levels").arg(MaxDepth);
        return std::nullopt;
    }
    return value;
}

std::optional<QVariant> PropertyList::fromFile(const QString &path, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = file.errorString();
        return std::nullopt;
    }
    // Never more than one byte past the limit, however large the file claims to be.
    const QByteArray data = file.read(MaxSize + 1);
    if (file.error() != QFileDevice::NoError) {
        if (error)
            *error = file.errorString();
        return std::nullopt;
    }
    return fromData(data, error);
}

} // namespace norvella
