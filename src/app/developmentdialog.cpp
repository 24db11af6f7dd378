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

QDialogButtonBox *addButtons(QFormLayout *form)
{
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Cancel | QDialogButtonBox::Ok |
                                         QDialogButtonBox::RestoreDefaults);
    buttons->setObjectName(QStringLiteral("developmentButtons"));
    form->addRow(buttons);
    return buttons;
}

} // namespace

struct DevelopmentDialog::Form
{
    explicit Form(QFormLayout *form);

    QDoubleSpinBox *exposure;
    QComboBox *whiteBalance;
    QSpinBox *temperature;
    QLineEdit *multipliers;
    QDialogButtonBox *buttons;
};

DevelopmentDialog::Form::Form(QFormLayout *form)
{
    exposure =
        addRow<QDoubleSpinBox>(form, QStringLiteral("exposureField"), QStringLiteral("&Exposure"));
    exposure->setRange(-mostExposure, mostExposure);
    exposure->setSingleStep(0.25);
    exposure->setSuffix(QStringLiteral(" EV"));
    exposure->setToolTip(QStringLiteral("So much brighter: 1 doubles the light"));

    whiteBalance = addRow<QComboBox>(form, QStringLiteral("whiteBalancePopUpButton"),
                                     QStringLiteral("&White balance"));
    whiteBalance->addItems(whiteBalanceItems);

    temperature =
        addRow<QSpinBox>(form, QStringLiteral("temperatureField"), QStringLiteral("&Temperature"));
    temperature->setRange(2000, 25000);
    temperature->setSingleStep(100);
    temperature->setSuffix(QStringLiteral(" K"));
    temperature->setValue(5500);

    multipliers =
        addRow<QLineEdit>(form, QStringLiteral("multipliersField"), QStringLiteral("&Multipliers"));
    multipliers->setAccessibleName(QStringLiteral("Multipliers of red, green and blue"));
    multipliers->setText(QStringLiteral("2,1,1.5"));
    multipliers->setToolTip(QStringLiteral("What red, green and blue are multiplied by"));

    buttons = addButtons(form);
}

DevelopmentDialog::DevelopmentDialog(QWidget *parent)
    : QDialog(parent)
    , m_form(std::make_unique<Form>(new QFormLayout(this)))
{
    setObjectName(QStringLiteral("developmentDialog"));
    setWindowTitle(QStringLiteral("Exposure and White Balance"));
    connect(m_form->exposure, &QDoubleSpinBox::valueChanged, this, &DevelopmentDialog::changed);
    connect(m_form->whiteBalance, &QComboBox::currentIndexChanged, this,
            &DevelopmentDialog::showWhatIsChosen);
    connect(m_form->temperature, &QSpinBox::valueChanged, this, &DevelopmentDialog::changed);
    connect(m_form->multipliers, &QLineEdit::textChanged, this,
            &DevelopmentDialog::showWhatIsChosen);
    connect(m_form->buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(m_form->buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_form->buttons->button(QDialogButtonBox::RestoreDefaults), &QPushButton::clicked, this,
            [this] { setChoices({}); });
    showWhatIsChosen();
}

DevelopmentDialog::~DevelopmentDialog() = default;

void DevelopmentDialog::setChoices(const RawCorrections &corrections)
{
    const WhiteBalanceItem item = itemOf(corrections.whiteBalance);
    m_form->exposure->setValue(corrections.exposure);
    m_form->whiteBalance->setCurrentIndex(item);
    if (item == TemperatureItem)
        m_form->temperature->setValue(corrections.whiteBalance.toInt());
    if (item == MultipliersItem)
        m_form->multipliers->setText(corrections.whiteBalance);
    m_form->exposure->setFocus();
    m_form->exposure->selectAll();
}

RawCorrections DevelopmentDialog::appliedTo(RawCorrections corrections) const
{
    corrections.exposure = m_form->exposure->value();
    if (isWhole())
        corrections.whiteBalance = whiteBalance();
    return corrections;
}

bool DevelopmentDialog::isWhole() const
{
    return m_form->whiteBalance->currentIndex() == CamerasItem || isWhiteBalance(whiteBalance());
}

QString DevelopmentDialog::whiteBalance() const
{
    switch (m_form->whiteBalance->currentIndex()) {
    case FoundItem:
        return QStringLiteral("auto");
    case TemperatureItem:
        return QString::number(m_form->temperature->value());
    case MultipliersItem:
        return m_form->multipliers->text().remove(QLatin1Char(' '));
    default:
        return {};
    }
}

void DevelopmentDialog::showWhatIsChosen()
{
    const int item = m_form->whiteBalance->currentIndex();
    m_form->temperature->setEnabled(item == TemperatureItem);
    m_form->multipliers->setEnabled(item == MultipliersItem);
    m_form->buttons->button(QDialogButtonBox::Ok)->setEnabled(isWhole());
    Q_EMIT changed();
}

} // namespace filmwright

#include "moc_developmentdialog.cpp"
