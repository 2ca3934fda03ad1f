// kestrivane-choose-folders PROMPT several|one: shows a dialogue for choosing folders whose
// confirming button says PROMPT. Writes the chosen folders to standard output, each with a null
// byte after it. The exit status is 1 when the user has cancelled.
#include <QAbstractItemView>
#include <QApplication>
#include <QFile>
#include <QFileDialog>
#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
  const QApplication application(argc, argv);
  const QStringList arguments = QApplication::arguments();

  QFileDialog dialogue;
  dialogue.setFileMode(QFileDialog::Directory);
  dialogue.setOption(QFileDialog::ShowDirsOnly);
  dialogue.setWindowFlag(Qt::WindowStaysOnTopHint);
  if (!arguments.value(1).isEmpty()) {
    dialogue.setLabelText(QFileDialog::Accept, arguments[1]);
    dialogue.setWindowTitle(arguments[1]);
  }
  if (arguments.value(2) == "several") {
    // Only Qt's own dialogue can choose several folders.
    dialogue.setOption(QFileDialog::DontUseNativeDialog);
    for (auto* view : dialogue.findChildren<QAbstractItemView*>())
      view->setSelectionMode(QAbstractItemView::ExtendedSelection);
  }
  if (dialogue.exec() != QDialog::Accepted) return EXIT_FAILURE;
  for (const QString& folder : dialogue.selectedFiles()) {
    const QByteArray path = QFile::encodeName(folder);
    std::fwrite(path.constData(), 1, static_cast<std::size_t>(path.size()) + 1, stdout);
  }
  return EXIT_SUCCESS;
}
