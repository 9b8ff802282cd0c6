#include "ConjugationServices.h"

namespace norvella {

namespace {
ConjugationServices::EventHandler &eventHandler()
{
    static ConjugationServices::EventHandler handler;
    return handler;
}

ConjugationServices::ReviewHandler &reviewHandler()
{
    static ConjugationServices::ReviewHandler handler;
    return handler;
}
} // namespace

void ConjugationServices::setEventHandler(EventHandler handler)
{
    eventHandler() = std::move(handler);
}

void ConjugationServices::setReviewHandler(ReviewHandler handler)
{
    reviewHandler() = std::move(handler);
}

void ConjugationServices::logEvent(const QString &name, const QVariantMap &parameters)
{
    if (eventHandler())
        eventHandler()(name, parameters);
}

void ConjugationServices::requestReview()
{
    if (reviewHandler())
        reviewHandler()();
}

} // namespace norvella
