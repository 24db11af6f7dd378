// SPDX-License-Identifier: MIT
#pragma once

#include "sluice/sluiceglobal.h"

#include <QMetaType>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QVariant>

#include <functional>
#include <memory>
#include <type_traits>

class SLPipeline;
class SLUnitProcess;

/// Direction of an outlet or of a pipeline.
enum SLOutletMode {
    SLOutletModeInput = 1,
    SLOutletModeOutput = 4,
};

/// A named, typed port of a unit process.
///
/// An input outlet is fed by the pipeline that is connected to it and holds the value that the
/// unit is processing. An output outlet hands every value that the unit sets on it to `target`.
///
/// Everything here is used on the main thread, except value() and setValue(), which belong to the
/// thread in which the unit's process() runs. What describes the outlet (name, mode, data type,
/// connected pipeline) doesn't change while the unit is executed.
class SLUICE_EXPORT SLOutlet
{
public:
    /// An operation with one argument, called on a target with a value.
    using Operation = std::function<void(QObject *target, const QVariant &value)>;

    /// A new input outlet without name, type and target.
    static std::shared_ptr<SLOutlet> outlet();

    SLOutlet();
    ~SLOutlet();
    SLOutlet(const SLOutlet &) = delete;
    SLOutlet &operator=(const SLOutlet &) = delete;

    /// Unique within the unit's inputs, and within its outputs.
    QString name() const;
    void setName(const QString &name);

    SLOutletMode mode() const;
    void setMode(SLOutletMode mode);

    /// The type of every value that passes. It describes; values are not converted to it.
    QMetaType dataType() const;
    void setDataType(QMetaType dataType);

    /// The receiver of an output's values; not owned. Without a target, or once it has died,
    /// values are dropped.
    QObject *target() const;
    void setTarget(QObject *target);

    /// What is called on the target with each value.
    void setSelector(Operation selector);

    /// The same for an operation of the target's class: values are handed over as its parameter's
    /// type. On a target of another class the operation isn't called.
    template <typename Target, typename Parameter>
    void setSelector(void (Target::*operation)(Parameter));

    /// Calls the selector on the target with `value`; without one of the two, does nothing.
    /// The selector may do anything, also destroy the outlet.
    void deliver(const QVariant &value) const;

    /// The pipeline that feeds this input, or nullptr.
    SLPipeline *pipeline() const;

    /// The value being processed at this input; invalid outside process().
    QVariant value() const;
    void setValue(const QVariant &value);

private:
    friend class SLPipeline;
    friend class SLUnitProcess;

    void valueArrived() const;

    QString m_name;
    SLOutletMode m_mode = SLOutletModeInput;
    QMetaType m_dataType;
    QPointer<QObject> m_target;
    Operation m_selector;
    SLPipeline *m_pipeline = nullptr;
    std::function<void()> m_valueArrived; ///< the unit's; empty without one
    QVariant m_value;
};

template <typename Target, typename Parameter>
void SLOutlet::setSelector(void (Target::*operation)(Parameter))
{
    setSelector([operation](QObject *target, const QVariant &value) {
        if (auto *receiver = dynamic_cast<Target *>(target))
            (receiver->*operation)(value.value<std::remove_cvref_t<Parameter>>());
    });
}
