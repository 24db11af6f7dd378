// SPDX-License-Identifier: MIT
#include "sluice/slunitprocess.h"

#include "sluice/slunithost.h"

#include <algorithm>

namespace {

SLOutlet *named(const SLUnitProcess::Outlets &outlets, const QString &name)
{
    const auto found = std::find_if(outlets.begin(), outlets.end(),
                                    [&](const auto &outlet) { return outlet->name() == name; });
    return found == outlets.end() ? nullptr : found->get();
}

} // namespace

SLUnitProcess::SLUnitProcess() = default;

SLUnitProcess::~SLUnitProcess()
{
    setInputs({});
}

const SLUnitProcess::Outlets &SLUnitProcess::inputs() const
{
    return m_inputs;
}

void SLUnitProcess::setInputs(const Outlets &inputs)
{
    for (const auto &input : m_inputs)
        input->m_valueArrived = nullptr;
    m_inputs = inputs;
    for (const auto &input : m_inputs) {
        input->m_valueArrived = [this] {
            if (m_host)
                m_host->inputArrived();
        };
    }
}

const SLUnitProcess::Outlets &SLUnitProcess::outputs() const
{
    return m_outputs;
}

void SLUnitProcess::setOutputs(const Outlets &outputs)
{
    m_outputs = outputs;
}

SLThreadMode SLUnitProcess::threadMode() const
{
    return m_threadMode;
}

void SLUnitProcess::setThreadMode(SLThreadMode threadMode)
{
    m_threadMode = threadMode;
}

SLOutlet *SLUnitProcess::outputForKey(const QString &name) const
{
    return named(m_outputs, name);
}

QVariant SLUnitProcess::inputValueForKey(const QString &name) const
{
    const SLOutlet *input = named(m_inputs, name);
    return input ? input->value() : QVariant();
}

void SLUnitProcess::setOutputValue(const QVariant &value, const QString &forKey)
{
    const SLOutlet *output = outputForKey(forKey);
    if (!output)
        return;
    if (m_host)
        m_host->deliverLater(output, value);
    else
        output->deliver(value);
}

void SLUnitProcess::interrupt() {}

bool SLUnitProcess::isStopped() const
{
    return m_host && m_host->isStopped();
}
