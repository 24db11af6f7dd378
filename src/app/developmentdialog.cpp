// SPDX-License-Identifier: MIT
#include "app/developmentdialog.h"

#include "mlvdump/rawcorrections.h"
#include "ui_development.h"

#include <QPushButton>

namespace filmwright {

namespace {

/// The items of the pop-up.
enum WhiteBalanceItem { CamerasItem, FoundItem, TemperatureItem, MultipliersItem };

WhiteBalanceItem itemOf(const QString &whiteBalance)
{
    if (whiteBalance.isEmpty())
        return CamerasItem;
    if (whiteBalance == QLatin1String("auto"))
        return FoundItem;
    return whiteBalance.contains(QLatin1Char(',')) ? MultipliersItem : TemperatureItem;
}

} // namespace

DevelopmentDialog::DevelopmentDialog(QWidget *parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::Development>())
{
    m_ui->setupUi(this);
    m_ui->exposureField->setRange(-mostExposure, mostExposure);
    connect(m_ui->whiteBalancePopUpButton, &QComboBox::currentIndexChanged, this,
            &DevelopmentDialog::showWhatIsChosen);
    connect(m_ui->multipliersField, &QLineEdit::textChanged, this,
            &DevelopmentDialog::showWhatIsChosen);
    connect(m_ui->exposureField, &QDoubleSpinBox::valueChanged, this, &DevelopmentDialog::changed);
    connect(m_ui->temperatureField, &QSpinBox::valueChanged, this, &DevelopmentDialog::changed);
    connect(m_ui->developmentButtons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(m_ui->developmentButtons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_ui->developmentButtons->button(QDialogButtonBox::RestoreDefaults),
            &QPushButton::clicked, this, [this] { setChoices(0, {}); });
    showWhatIsChosen();
}

DevelopmentDialog::~DevelopmentDialog() = default;

void DevelopmentDialog::setChoices(double exposure, const QString &whiteBalance)
{
    const WhiteBalanceItem item = itemOf(whiteBalance);
    m_ui->exposureField->setValue(exposure);
    m_ui->whiteBalancePopUpButton->setCurrentIndex(item);
    if (item == TemperatureItem)
        m_ui->temperatureField->setValue(whiteBalance.toInt());
    if (item == MultipliersItem)
        m_ui->multipliersField->setText(whiteBalance);
    m_ui->exposureField->setFocus();
    m_ui->exposureField->selectAll();
}

double DevelopmentDialog::exposure() const
{
    return m_ui->exposureField->value();
}

QString DevelopmentDialog::whiteBalance() const
{
    switch (m_ui->whiteBalancePopUpButton->currentIndex()) {
    case FoundItem:
        return QStringLiteral("auto");
    case TemperatureItem:
        return QString::number(m_ui->temperatureField->value());
    case MultipliersItem:
        return m_ui->multipliersField->text().remove(QLatin1Char(' '));
    default:
        return {};
    }
}

void DevelopmentDialog::showWhatIsChosen()
{
    const int item = m_ui->whiteBalancePopUpButton->currentIndex();
    m_ui->temperatureField->setEnabled(item == TemperatureItem);
    m_ui->multipliersField->setEnabled(item == MultipliersItem);
    const QString chosen = whiteBalance();
    m_ui->developmentButtons->button(QDialogButtonBox::Ok)
        ->setEnabled(item == CamerasItem || isWhiteBalance(chosen));
    Q_EMIT changed();
}

} // namespace filmwright
