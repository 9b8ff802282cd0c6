#include "PropertyList.h"

#include <QDateTime>
#include <QFile>
#include <QVariantList>
#include <QVariantMap>

#include <plist/plist.h>

#include <cstdlib>

namespace norvella {

namespace {

QVariant convert(plist_t node)
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
    case PLIST_ARRAY: {
        QVariantList list;
        const uint32_t size = plist_array_get_size(node);
        for (uint32_t i = 0; i < size; ++i)
            list << convert(plist_array_get_item(node, i));
        return list;
    }
    case PLIST_DICT: {
        QVariantMap map;
        plist_dict_iter iter = nullptr;
        plist_dict_new_iter(node, &iter);
        char *key = nullptr;
        plist_t value = nullptr;
        for (plist_dict_next_item(node, iter, &key, &value); key; plist_dict_next_item(node, iter, &key, &value)) {
            map.insert(QString::fromUtf8(key), convert(value));
            std::free(key);
            key = nullptr;
        }
        std::free(iter);
        return map;
    }
    default:
        return {};
    }
}

} // namespace

std::optional<QVariant> PropertyList::fromData(const QByteArray &data)
{
    if (data.isEmpty())
        return std::nullopt;
    plist_t root = nullptr;
    if (plist_is_binary(data.constData(), uint32_t(data.size())))
        plist_from_bin(data.constData(), uint32_t(data.size()), &root);
    else
        plist_from_xml(data.constData(), uint32_t(data.size()), &root);
    if (!root)
        return std::nullopt;
    QVariant value = convert(root);
    plist_free(root);
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
    auto value = fromData(file.readAll());
    if (!value && error)
        *error = QStringLiteral("not a property list");
    return value;
}

} // namespace norvella
