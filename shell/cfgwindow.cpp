#include "cfgwindow.h"

#include "desktop.h"
#include "settingsmodel.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QVBoxLayout>
#include <optional>
#include <variant>

namespace {

QPushButton *button(QWidget *parent, const char *name, const QString &text)
{
    auto *result = new QPushButton(text, parent);
    result->setObjectName(QLatin1String(name));
    result->setAutoDefault(false);
    return result;
}

// One line of a tab: labels (given as texts) and controls side by side.
QHBoxLayout *row(QWidget *parent, std::initializer_list<std::variant<QString, QWidget *>> parts)
{
    auto *layout = new QHBoxLayout;
    for (const auto &part : parts) {
        if (const auto *text = std::get_if<QString>(&part))
            layout->addWidget(new QLabel(*text, parent));
        else
            layout->addWidget(std::get<QWidget *>(part));
    }
    layout->addStretch();
    return layout;
}

} // namespace

CfgWindow::CfgWindow(SettingsModel &model, Desktop &desktop, QWidget *parent)
    : QDialog(parent), m_model(model), m_desktop(desktop)
{
    setObjectName(QStringLiteral("cfg"));
    setWindowTitle(QStringLiteral("Configuración"));

    auto *tab = new QTabWidget(this);
    tab->setObjectName(QStringLiteral("tab"));
    tab->addTab(generalTab(), QStringLiteral("Opciones generales"));
    tab->addTab(downloadsTab(), QStringLiteral("Descargas"));
    tab->addTab(updatesTab(), QStringLiteral("Actualizaciones"));
    tab->addTab(notificationsTab(), QStringLiteral("Notificaciones"));

    auto *acept = button(this, "acept", QStringLiteral("Aceptar"));
    acept->setDefault(true);
    auto *cancel = button(this, "cancel", QStringLiteral("Cancelar"));
    connect(acept, &QPushButton::clicked, this, &CfgWindow::accept);
    connect(cancel, &QPushButton::clicked, this, &CfgWindow::reject);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(acept);
    buttons->addWidget(cancel);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(tab);
    layout->addLayout(buttons);

    connect(&m_model, &SettingsModel::changed, this, &CfgWindow::showSettings);
    showSettings();
}

QWidget *CfgWindow::generalTab()
{
    auto *page = new QWidget(this);
    auto *brdir = button(page, "brdir", QStringLiteral("..."));
    auto *brvirus = button(page, "brvirus", QStringLiteral("..."));
    auto *add = button(page, "add", QStringLiteral("Añadir"));
    auto *del = button(page, "del", QStringLiteral("Eliminar"));
    connect(brdir, &QPushButton::clicked, this, &CfgWindow::browseFolder);
    connect(brvirus, &QPushButton::clicked, this, &CfgWindow::browseVirus);
    connect(add, &QPushButton::clicked, this, &CfgWindow::addExtension);
    connect(del, &QPushButton::clicked, this, &CfgWindow::deleteExtension);

    m_ext = new QListWidget(page);
    m_ext->setObjectName(QStringLiteral("ext"));
    m_ext->setSelectionMode(QAbstractItemView::SingleSelection);
    auto *extButtons = new QVBoxLayout;
    extButtons->addWidget(add);
    extButtons->addWidget(del);
    extButtons->addStretch();
    auto *extRow = new QHBoxLayout;
    extRow->addWidget(m_ext);
    extRow->addLayout(extButtons);

    auto *layout = new QVBoxLayout(page);
    layout->addWidget(new QLabel(QStringLiteral("Directorio por defecto:"), page));
    auto *defdir = new QHBoxLayout;
    defdir->addWidget(textBox("defdir", &Settings::defdir), 1);
    defdir->addWidget(brdir);
    layout->addLayout(defdir);
    layout->addWidget(checkBox("initstart", QStringLiteral("Iniciar descargas al iniciar"),
                               &Settings::initstart));
    layout->addWidget(checkBox("showmsg", QStringLiteral("Mostrar mensaje al terminar la descarga"),
                               &Settings::showmsg));
    QCheckBox *portapapeles = extraBox("portapapeles", QStringLiteral("Vigilar el portapapeles"),
                                       &ExtraSettings::portapapeles);
    portapapeles->setToolTip(QStringLiteral("Una dirección de descarga copiada se ofrece en la "
                                            "barra de añadido rápido"));
    layout->addWidget(portapapeles);
    layout->addWidget(checkBox("exevirus",
                               QStringLiteral("Ejecutar antivirus al descargar ficheros de tipo:"),
                               &Settings::exevirus));
    layout->addLayout(extRow);
    auto *virus = new QHBoxLayout;
    virus->addWidget(new QLabel(QStringLiteral("Antivirus:"), page));
    virus->addWidget(textBox("virus", &Settings::virus), 1);
    virus->addWidget(brvirus);
    layout->addLayout(virus);
    return page;
}

QWidget *CfgWindow::downloadsTab()
{
    auto *page = new QWidget(this);
    auto *layout = new QVBoxLayout(page);
    // The two blanks in "descargas  cada" are part of the text.
    layout->addLayout(
        row(page, {QStringLiteral("Reintentar descargas  cada"), textBox("segs", &Settings::segs),
                   spinBox("segsv", &Settings::segsv), QStringLiteral("segundos hasta"),
                   textBox("veces", &Settings::veces), spinBox("vecesv", &Settings::vecesv),
                   QStringLiteral("veces.")}));
    layout->addLayout(
        row(page, {QStringLiteral("Descargar"), textBox("maxdesc", &Settings::maxdesc),
                   spinBox("maxdescval", &Settings::maxdescval),
                   QStringLiteral("archivos simultaneamente como máximo.")}));
    layout->addLayout(row(
        page, {QStringLiteral("Reconectar cuando hayan pasado"), textBox("wait", &Settings::wait),
               spinBox("waitv", &Settings::waitv), QStringLiteral("segundos sin recibir datos")}));
    auto *hint =
        new QLabel(QStringLiteral("No configure un valor demasiado bajo, ya que provocaría "
                                  "continuas reconexiones sin darle tiempo al servidor a "
                                  "responder"),
                   page);
    hint->setWordWrap(true);
    layout->addWidget(hint);
    layout->addWidget(
        checkBox("delinc", QStringLiteral("Eliminar archivos incompletos tras agotar los intentos"),
                 &Settings::delinc));
    layout->addWidget(checkBox("dellista", QStringLiteral("Eliminar de la lista al finalizar"),
                               &Settings::dellista));
    layout->addWidget(checkBox(
        "autocont", QStringLiteral("Continuar una descarga inactiva cuando finalice una activa"),
        &Settings::autocont));
    QCheckBox *limitar =
        extraBox("limitar", QStringLiteral("Limitar velocidad a"), &ExtraSettings::limitar);
    QSpinBox *limite = extraSpin("limite", &ExtraSettings::limite);
    limite->setSuffix(QStringLiteral(" Kb/s"));
    limite->setToolTip(QStringLiteral("Entre todas las descargas; 0: sin límite"));
    limite->setAccessibleName(QStringLiteral("Limitar velocidad a"));
    limite->setAccessibleDescription(limite->toolTip());
    layout->addLayout(row(page, {limitar, limite}));
    QSpinBox *conexiones = extraSpin("conexiones", &ExtraSettings::conexiones);
    conexiones->setToolTip(
        QStringLiteral("Si el servidor envía el archivo por partes; 1: una sola conexión"));
    conexiones->setAccessibleName(QStringLiteral("Conexiones por descarga"));
    conexiones->setAccessibleDescription(conexiones->toolTip());
    auto *conexionesLabel = new QLabel(QStringLiteral("Conexiones por descarga"), page);
    conexionesLabel->setBuddy(conexiones);
    layout->addLayout(row(page, {conexionesLabel, conexiones}));
    layout->addStretch();
    return page;
}

QWidget *CfgWindow::updatesTab()
{
    auto *page = new QWidget(this);
    auto *frame = new QGroupBox(page);
    frame->setObjectName(QStringLiteral("Frame2"));
    auto *options = new QVBoxLayout(frame);
    options->addWidget(optionButton("autoact",
                                    QStringLiteral("Descargar automáticamente la actualización"),
                                    &Settings::autoact));
    options->addWidget(optionButton("notact",
                                    QStringLiteral("Notificar si hay disponibles actualizaciones"),
                                    &Settings::notact));

    auto *layout = new QVBoxLayout(page);
    layout->addWidget(checkBox("checkact", QStringLiteral("Comprobar actualizaciones al iniciar"),
                               &Settings::checkact));
    layout->addWidget(
        new QLabel(QStringLiteral("Esta opción ha sido desactivada de momento."), page));
    layout->addWidget(frame);
    layout->addStretch();
    return page;
}

QWidget *CfgWindow::notificationsTab()
{
    auto *page = new QWidget(this);
    auto *frame = new QGroupBox(
        QStringLiteral("En caso de errores en la descarga (tras los reintentos)"), page);
    frame->setObjectName(QStringLiteral("Frame1"));
    auto *options = new QVBoxLayout(frame);
    options->addWidget(optionButton(
        "msgsys", QStringLiteral("Mostrar icono en la barra del sistema"), &Settings::msgsys));
    options->addWidget(optionButton(
        "msgdialog", QStringLiteral("Mostrar avisos en ventana de diálogo"), &Settings::msgdialog));
    options->addWidget(optionButton("msgno", QStringLiteral("No avisar de errores de descarga"),
                                    &Settings::msgno));

    auto *histbr = button(page, "histbr", QStringLiteral("..."));
    connect(histbr, &QPushButton::clicked, this, &CfgWindow::browseHistory);
    // Only the spin box sets hsizet, so the two never disagree.
    QLineEdit *hsizet = textBox("hsizet", &Settings::hsizet);
    hsizet->setReadOnly(true);

    auto *layout = new QVBoxLayout(page);
    layout->addWidget(frame);
    layout->addWidget(checkBox("wavs", QStringLiteral("Reproducir sonidos"), &Settings::wavs));
    layout->addWidget(new QLabel(QStringLiteral("Guardar historial en:"), page));
    auto *history = new QHBoxLayout;
    history->addWidget(textBox("histrut", &Settings::histrut), 1);
    history->addWidget(histbr);
    layout->addLayout(history);
    layout->addLayout(
        row(page, {QStringLiteral("Limitar tamaño del historial a"), hsizet,
                   spinBox("histsize", &Settings::histsize), QStringLiteral("Kbytes")}));
    layout->addStretch();
    return page;
}

QLineEdit *CfgWindow::textBox(const char *name, QString Settings::*field)
{
    auto *box = new QLineEdit(this);
    box->setObjectName(QLatin1String(name));
    connect(box, &QLineEdit::textChanged, this,
            [this, field](const QString &text) { m_model.setText(field, text); });
    m_texts.emplace_back(box, field);
    return box;
}

QCheckBox *CfgWindow::checkBox(const char *name, const QString &label, int Settings::*field)
{
    auto *box = new QCheckBox(label, this);
    box->setObjectName(QLatin1String(name));
    connect(box, &QCheckBox::toggled, this,
            [this, field](bool checked) { m_model.setCheck(field, checked); });
    m_checks.emplace_back(box, field);
    return box;
}

QCheckBox *CfgWindow::extraBox(const char *name, const QString &label, bool ExtraSettings::*field)
{
    auto *box = new QCheckBox(label, this);
    box->setObjectName(QLatin1String(name));
    connect(box, &QCheckBox::toggled, this,
            [this, field](bool checked) { m_model.setExtra(field, checked); });
    m_extraChecks.emplace_back(box, field);
    return box;
}

QRadioButton *CfgWindow::optionButton(const char *name, const QString &label, bool Settings::*field)
{
    auto *option = new QRadioButton(label, this);
    option->setObjectName(QLatin1String(name));
    connect(option, &QRadioButton::toggled, this, [this, field](bool checked) {
        if (checked)
            m_model.setOption(field);
    });
    m_options.emplace_back(option, field);
    return option;
}

QSpinBox *CfgWindow::spinBox(const char *name, int Settings::*field)
{
    auto *spin = new QSpinBox(this);
    spin->setObjectName(QLatin1String(name));
    for (const SpinSetting &setting : SettingsModel::spins()) {
        if (setting.value == field)
            spin->setRange(setting.minimum, setting.maximum);
    }
    connect(spin, &QSpinBox::valueChanged, this,
            [this, field](int value) { m_model.setSpin(field, value); });
    m_spins.emplace_back(spin, field);
    return spin;
}

QSpinBox *CfgWindow::extraSpin(const char *name, int ExtraSettings::*field)
{
    auto *spin = new QSpinBox(this);
    spin->setObjectName(QLatin1String(name));
    for (const ExtraSettings::Key &key : ExtraSettings::keys()) {
        if (const auto *number = std::get_if<int ExtraSettings::*>(&key.field);
            number && *number == field)
            spin->setRange(key.minimum, key.maximum);
    }
    connect(spin, &QSpinBox::valueChanged, this,
            [this, field](int value) { m_model.setExtraNumber(field, value); });
    m_extraSpins.emplace_back(spin, field);
    return spin;
}

void CfgWindow::showSettings()
{
    // Only what differs is set, so a box being typed into keeps its cursor.
    const Settings &s = m_model.settings();
    for (const auto &[box, field] : m_texts) {
        if (box->text() != s.*field) {
            const QSignalBlocker blocker(box);
            box->setText(s.*field);
        }
    }
    for (const auto &[box, field] : m_checks) {
        const QSignalBlocker blocker(box);
        box->setChecked(s.*field != 0);
    }
    for (const auto &[box, field] : m_extraChecks) {
        const QSignalBlocker blocker(box);
        box->setChecked(m_model.extra().*field);
    }
    for (const auto &[option, field] : m_options) {
        // Checking the one that is on unchecks the rest of its group.
        if (s.*field) {
            const QSignalBlocker blocker(option);
            option->setChecked(true);
        }
    }
    for (const auto &[spin, field] : m_spins) {
        const QSignalBlocker blocker(spin);
        spin->setValue(s.*field);
    }
    for (const auto &[spin, field] : m_extraSpins) {
        const QSignalBlocker blocker(spin);
        spin->setValue(m_model.extra().*field);
    }
    QStringList shown;
    for (int i = 0; i < m_ext->count(); ++i)
        shown.append(m_ext->item(i)->text());
    if (shown != s.ext) {
        m_ext->clear();
        m_ext->addItems(s.ext);
    }
}

void CfgWindow::accept()
{
    QDialog::accept();
    m_model.save();
}

void CfgWindow::reject()
{
    m_model.load();
    QDialog::reject();
}

void CfgWindow::browseFolder()
{
    // As the chooser gives it: no separator is added until the file is read again.
    const QString folder = m_desktop.chooseFolder(m_model.settings().defdir);
    if (!folder.isEmpty())
        m_model.setText(&Settings::defdir, folder);
}

void CfgWindow::browseVirus()
{
    const QString pattern = QStringLiteral("*.exe");
    const QString name = m_desktop.openFileDialog(pattern, pattern);
    if (!name.isEmpty() && name != pattern)
        m_model.setText(&Settings::virus, name);
}

void CfgWindow::browseHistory()
{
    const QString pattern = QStringLiteral("*.rtf");
    const QString name = m_desktop.saveFileDialog(m_model.settings().histrut, pattern);
    if (!name.isEmpty() && name != pattern)
        m_model.setText(&Settings::histrut, name);
}

void CfgWindow::addExtension()
{
    const std::optional<QString> answer = m_desktop.inputBox(
        QStringLiteral("Escriba la extensión del tipo de archivo con el punto (p.ej .exe)"),
        QString());
    if (answer && !answer->isEmpty())
        m_model.appendExt(*answer);
}

void CfgWindow::deleteExtension()
{
    const QList<QListWidgetItem *> selected = m_ext->selectedItems();
    if (!selected.isEmpty())
        m_model.removeExt(m_ext->row(selected.first()));
}
