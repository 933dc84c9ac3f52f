#include "mainwin/ModalLimit.h"

#include <utility>

#include <QDialog>
#include <QTimer>

namespace venlo
{

namespace
{
constexpr std::chrono::milliseconds lookInterval{100};
}

ModalLimit::ModalLimit(QDialog &dialog, Rule rule) : m_dialog(dialog), m_rule(std::move(rule))
{
    auto *looks = new QTimer(this);
    connect(looks, &QTimer::timeout, this, &ModalLimit::look);
    looks->start(lookInterval);
    if (m_rule.limit.count() > 0)
        QTimer::singleShot(m_rule.limit, this, [this] { m_rule.answer(); });
}

void ModalLimit::look()
{
    if (m_rule.mustEnd())
        m_dialog.reject();
}

} // namespace venlo
