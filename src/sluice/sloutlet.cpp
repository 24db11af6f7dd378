// SPDX-License-Identifier: MIT
#include "sluice/sloutlet.h"

#include <utility>

std::shared_ptr<SLOutlet> SLOutlet::outlet()
{
    return std::make_shared<SLOutlet>();
}

SLOutlet::SLOutlet() = default;
SLOutlet::~SLOutlet() = default;

QString SLOutlet::name() const
{
    return m_name;
}

void SLOutlet::setName(const QString &name)
{
    m_name = name;
}

SLOutletMode SLOutlet::mode() const
{
    return m_mode;
}

void SLOutlet::setMode(SLOutletMode mode)
{
    m_mode = mode;
}

QMetaType SLOutlet::dataType() const
{
    return m_dataType;
}

void SLOutlet::setDataType(QMetaType dataType)
{
    m_dataType = dataType;
}

QObject *SLOutlet::target() const
{
    return m_target;
}

void SLOutlet::setTarget(QObject *target)
{
    m_target = target;
}

void SLOutlet::setSelector(Operation selector)
{
    m_selector = std::move(selector);
}

void SLOutlet::deliver(const QVariant &value) const
{
    if (!m_target || !m_selector)
        return;
    // A copy, because the call may end in this outlet's destruction.
    const Operation selector = m_selector;
    selector(m_target, value);
}

SLPipeline *SLOutlet::pipeline() const
{
    return m_pipeline;
}

QVariant SLOutlet::value() const
{
    return m_value;
}

void SLOutlet::setValue(const QVariant &value)
{
    m_value = value;
}

void SLOutlet::valueArrived() const
{
    if (m_valueArrived)
        m_valueArrived();
}
