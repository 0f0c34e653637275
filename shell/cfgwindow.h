#pragma once

#include "extrasettings.h"
#include "settings.h"

#include <QDialog>
#include <utility>
#include <vector>

class Desktop;
class QCheckBox;
class QLineEdit;
class QListWidget;
class QRadioButton;
class QSpinBox;
class SettingsModel;

// The settings window "cfg": shows the model's values and writes every edit back into it.
// Accepting saves the file; cancelling (or closing) reads the file again.
class CfgWindow final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CfgWindow)

public:
    CfgWindow(SettingsModel &model, Desktop &desktop, QWidget *parent = nullptr);

    void accept() override;
    void reject() override;

private:
    QWidget *generalTab();
    QWidget *downloadsTab();
    QWidget *updatesTab();
    QWidget *notificationsTab();

    QLineEdit *textBox(const char *name, QString Settings::*field);
    QCheckBox *checkBox(const char *name, const QString &label, int Settings::*field);
    QCheckBox *extraBox(const char *name, const QString &label, bool ExtraSettings::*field);
    QRadioButton *optionButton(const char *name, const QString &label, bool Settings::*field);
    QSpinBox *spinBox(const char *name, int Settings::*field);
    QSpinBox *extraSpin(const char *name, int ExtraSettings::*field);

    void showSettings();
    void browseFolder();
    void browseVirus();
    void browseHistory();
    void addExtension();
    void deleteExtension();

    SettingsModel &m_model;
    Desktop &m_desktop;
    QListWidget *m_ext = nullptr;
    std::vector<std::pair<QLineEdit *, QString Settings::*>> m_texts;
    std::vector<std::pair<QCheckBox *, int Settings::*>> m_checks;
    std::vector<std::pair<QCheckBox *, bool ExtraSettings::*>> m_extraChecks;
    std::vector<std::pair<QRadioButton *, bool Settings::*>> m_options;
    std::vector<std::pair<QSpinBox *, int Settings::*>> m_spins;
    std::vector<std::pair<QSpinBox *, int ExtraSettings::*>> m_extraSpins;
};
