#pragma once

#include <QString>
#include <QVariantMap>

#include <functional>

namespace norvella {

// The platform services this screen calls without owning them: the usage
// event log and the store-review request. Both do nothing until the app
// installs a handler, so the library does not depend on the app.
class ConjugationServices
{
public:
    using EventHandler = std::function<void(const QString &name, const QVariantMap &parameters)>;
    using ReviewHandler = std::function<void()>;

    static void setEventHandler(EventHandler handler);
    static void setReviewHandler(ReviewHandler handler);

    static void logEvent(const QString &name, const QVariantMap &parameters);
    static void requestReview();
};

} // namespace norvella
