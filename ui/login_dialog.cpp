#include "ui/login_dialog.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include "ui/translate.h"

namespace qumbrel {

LoginDialog::LoginDialog(Program& ctx, QWidget* parent) : QDialog(parent), ctx_(ctx) {
    setObjectName("frm_login");
    setWindowTitle("Login");
    setModal(true);
    prompt_ = new QLabel("Password", this);
    prompt_->setObjectName("lbl_prompt");
    password_ = new QLineEdit(this);
    password_->setObjectName("txt_password");
    password_->setEchoMode(QLineEdit::Password);
    auto* login = new QPushButton("Login", this);
    login->setObjectName("cmd_login");
    auto* close = new QPushButton("Close", this);
    close->setObjectName("cmd_close");
    status_ = new QLabel("Wrong password", this);
    status_->setObjectName("lbl_status");
    status_->setVisible(false);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(login);
    buttons->addWidget(close);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(prompt_);
    layout->addWidget(password_);
    layout->addWidget(status_);
    layout->addLayout(buttons);
    connect(login, &QPushButton::clicked, this, &LoginDialog::login);
    connect(password_, &QLineEdit::returnPressed, this, &LoginDialog::login);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
    translate_widget(ctx_, this);
}

void LoginDialog::set_prompt(const QString& text) {
    if (!text.isEmpty()) prompt_->setText(text);
}

void LoginDialog::login() {
    if (password_->text().toStdString() == ctx_.opt.strProtectionPassword) {
        ctx_.opt.bLoggedIn = kTrue;
        accept();
        return;
    }
    status_->setVisible(true);
}

}  // namespace qumbrel
