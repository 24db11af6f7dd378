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
    return m_outputs.empty() ? nullptr : m_outputs.front().lock();
}

void SLPipeline::setOutput(const std::shared_ptr<SLOutlet> &output)
{
    for (const auto &entry : m_outputs)
        if (const auto previous = entry.lock(); previous && previous->m_pipeline == this)
            previous->m_pipeline = nullptr;
    m_outputs.clear();
    if (output)
        addOutput(output);
}

void SLPipeline::addOutput(const std::shared_ptr<SLOutlet> &output)
{
    m_outputs.push_back(output);
    output->m_pipeline = this;
}

void SLPipeline::setValue(const QVariant &value)
{
    Q_ASSERT(value.isValid());
    {
        const std::lock_guard lock(m_mutex);
        m_values.push_back(value);
    }
    // Told without the lock: the units take their manager's first and then this one.
    for (const auto &entry : m_outputs)
        if (const auto output = entry.lock())
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
