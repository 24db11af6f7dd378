// SPDX-License-Identifier: MIT
#include "app/developmentdialog.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>

namespace filmwright {

namespace {

/// The items of the pop-up, in its order.
enum WhiteBalanceItem { CamerasItem, FoundItem, TemperatureItem, MultipliersItem };

const QStringList whiteBalanceItems{QStringLiteral("As the camera was set"),
                                    QStringLiteral("Found in the frames"),
                                    QStringLiteral("Temperature"), QStringLiteral("Multipliers")};

WhiteBalanceItem itemOf(const QString &whiteBalance)
{
    if (whiteBalance.isEmpty())
        return CamerasItem;
    if (whiteBalance == QLatin1String("auto"))
        return FoundItem;
    return whiteBalance.contains(QLatin1Char(',')) ? MultipliersItem : TemperatureItem;
}

/// A row of the form. What the label says is also what screen readers say.
template <typename Field>
Field *addRow(QFormLayout *form, const QString &name, const QString &label)
{
    auto *field = new Field;
    field->setObjectName(name);
    field->setAccessibleName(QString(label).remove(QLatin1Char('&')));
    form->addRow(label + QLatin1Char(':'), field);
    return field;
}

} // namespace

DevelopmentDialog::DevelopmentDialog(QWidget *parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("developmentDialog"));
    setWindowTitle(QStringLiteral("Exposure and White Balance"));
    auto *form = new QFormLayout(this);
    m_exposureField =
        addRow<QDoubleSpinBox>(form, QStringLiteral("exposureField"), QStringLiteral("&Exposure"));
    m_exposureField->setRange(-mostExposure, mostExposure);
    m_exposureField->setSingleStep(0.25);
    m_exposureField->setSuffix(QStringLiteral(" EV"));
    m_exposureField->setToolTip(QStringLiteral("So much brighter: 1 doubles the light"));

    m_whiteBalancePopUpButton = addRow<QComboBox>(form, QStringLiteral("whiteBalancePopUpButton"),
                                                  QStringLiteral("&White balance"));
    m_whiteBalancePopUpButton->addItems(whiteBalanceItems);

    m_temperatureField =
        addRow<QSpinBox>(form, QStringLiteral("temperatureField"), QStringLiteral("&Temperature"));
    m_temperatureField->setRange(2000, 25000);
    m_temperatureField->setSingleStep(100);
    m_temperatureField->setSuffix(QStringLiteral(" K"));
    m_temperatureField->setValue(5500);

    m_multipliersField =
        addRow<QLineEdit>(form, QStringLiteral("multipliersField"), QStringLiteral("&Multipliers"));
    m_multipliersField->setText(QStringLiteral("2,1,1.5"));
    m_multipliersField->setToolTip(QStringLiteral("What red, green and blue are multiplied by"));

    m_developmentButtons = new QDialogButtonBox(QDialogButtonBox::Cancel | QDialogButtonBox::Ok |
                                                QDialogButtonBox::RestoreDefaults);
    m_developmentButtons->setObjectName(QStringLiteral("developmentButtons"));
    form->addRow(m_developmentButtons);

    connect(m_exposureField, &QDoubleSpinBox::valueChanged, this, &DevelopmentDialog::changed);
    connect(m_whiteBalancePopUpButton, &QComboBox::currentIndexChanged, this,
            &DevelopmentDialog::showWhatIsChosen);
    connect(m_temperatureField, &QSpinBox::valueChanged, this, &DevelopmentDialog::changed);
    connect(m_multipliersField, &QLineEdit::textChanged, this,
            &DevelopmentDialog::showWhatIsChosen);
    connect(m_developmentButtons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(m_developmentButtons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_developmentButtons->button(QDialogButtonBox::RestoreDefaults), &QPushButton::clicked,
            this, [this] { setChoices({}); });
    showWhatIsChosen();
}

void DevelopmentDialog::setChoices(const RawCorrections &corrections)
{
    const WhiteBalanceItem item = itemOf(corrections.whiteBalance);
    m_exposureField->setValue(corrections.exposure);
    m_whiteBalancePopUpButton->setCurrentIndex(item);
    if (item == TemperatureItem)
        m_temperatureField->setValue(corrections.whiteBalance.toInt());
    if (item == MultipliersItem)
        m_multipliersField->setText(corrections.whiteBalance);
    m_exposureField->setFocus();
    m_exposureField->selectAll();
}

RawCorrections DevelopmentDialog::appliedTo(RawCorrections corrections) const
{
    corrections.exposure = m_exposureField->value();
    if (isWhole())
        corrections.whiteBalance = whiteBalance();
    return corrections;
}

bool DevelopmentDialog::isWhole() const
{
    return m_whiteBalancePopUpButton->currentIndex() == CamerasItem ||
           isWhiteBalance(whiteBalance());
}

QString DevelopmentDialog::whiteBalance() const
{
    switch (m_whiteBalancePopUpButton->currentIndex()) {
    case FoundItem:
        return QStringLiteral("auto");
    case TemperatureItem:
        return QString::number(m_temperatureField->value());
    case MultipliersItem:
        return m_multipliersField->text().remove(QLatin1Char(' '));
    default:
        return {};
    }
}

void DevelopmentDialog::showWhatIsChosen()
{
    const int item = m_whiteBalancePopUpButton->currentIndex();
    m_temperatureField->setEnabled(item == TemperatureItem);
    m_multipliersField->setEnabled(item == MultipliersItem);
    m_developmentButtons->button(QDialogButtonBox::Ok)->setEnabled(isWhole());
    Q_EMIT changed();
}

} // namespace filmwright
