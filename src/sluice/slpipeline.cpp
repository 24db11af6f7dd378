// SPDX-License-Identifier: MIT
#include "sluice/slpipeline.h"

#include <utility>

std::unique_ptr<SLPipeline> SLPipeline::pipeline()
{
    return std::make_unique<SLPipeline>();
}

SLPipeline::SLPipeline() = default;

SLPipeline::~SLPipeline()
{
    setOutput(nullptr);
}

QMetaType SLPipeline::dataType() const
{
    return m_dataType;
}

void SLPipeline::setDataType(QMetaType dataType)
{
    m_dataType = dataType;
}

SLOutletMode SLPipeline::mode() const
{
    return m_mode;
}

void SLPipeline::setMode(SLOutletMode mode)
{
    m_mode = mode;
}

std::shared_ptr<SLOutlet> SLPipeline::output() const
{
    return m_output.lock();
}

void SLPipeline::setOutput(const std::shared_ptr<SLOutlet> &output)
{
    if (const auto previous = m_output.lock(); previous && previous->m_pipeline == this)
        previous->m_pipeline = nullptr;
    m_output = output;
    if (output)
        output->m_pipeline = this;
}

void SLPipeline::setValue(const QVariant &value)
{
    Q_ASSERT(value.isValid());
    {
        const std::lock_guard lock(m_mutex);
        m_values.push_back(value);
    }
    // Told without the lock: the unit takes its own first and then this one.
    if (const auto output = m_output.lock())
        output->valueArrived();
}

QVariant SLPipeline::value()
{
    const std::lock_guard lock(m_mutex);
    if (m_values.empty())
        return {};
    QVariant oldest = std::move(m_values.front());
    m_values.pop_front();
    return oldest;
}

bool SLPipeline::isEmpty() const
{
    const std::lock_guard lock(m_mutex);
    return m_values.empty();
}
