// kestrivane-ask TEXT [ACCEPT DECLINE]: shows a dialogue with the text and the two buttons, or with
// one to close it. The exit status is 0 when the user has chosen ACCEPT, else 1.
#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <cstdlib>

int main(int argc, char** argv) {
  const QApplication application(argc, argv);
  const QStringList arguments = QApplication::arguments();

  QMessageBox dialogue;
  dialogue.setWindowTitle("Kestrivane");
  dialogue.setWindowFlag(Qt::WindowStaysOnTopHint);
  dialogue.setIcon(QMessageBox::Information);
  dialogue.setTextFormat(Qt::PlainText);
  dialogue.setText(arguments.value(1));
  QPushButton* accept = nullptr;
  if (arguments.size() > 3) {
    accept = dialogue.addButton(arguments[2], QMessageBox::AcceptRole);
    // It comes unasked: whoever is typing must not agree by that.
    dialogue.setDefaultButton(dialogue.addButton(arguments[3], QMessageBox::RejectRole));
  }
  dialogue.exec();
  return accept != nullptr && dialogue.clickedButton() == accept ? EXIT_SUCCESS : EXIT_FAILURE;
}
