#pragma once
// frm_login: the password box that guards the program when protection is on. A right
// password sets bLoggedIn and closes; a wrong one shows "Wrong password" and stays; Enter
// in the box logs in; closing leaves bLoggedIn as it was.
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "frame/context.h"

namespace qumbrel {

class LoginDialog final : public QDialog {
    Q_OBJECT
  public:
    explicit LoginDialog(Program& ctx, QWidget* parent = nullptr);
    // The question above the box (the settings page asks for the present or the new
    // password); empty shows the form's own.
    void set_prompt(const QString& text);

  private:
    void login();

    Program& ctx_;
    QLabel* prompt_;
    QLineEdit* password_;
    QLabel* status_;
};

}  // namespace qumbrel
