#include "views/Views.hpp"

// Made by the build: registers the types of the module that are written in C++. Calling it keeps
// the linker from leaving them out of a program that only names them in QML.
extern void qml_register_types_Kestrivane();  // NOLINT(readability-identifier-naming): Qt's name

namespace kestrivane {

void addViews(QQmlEngine& engine) {
  qml_register_types_Kestrivane();
  engine.addImportPath(QStringLiteral(":/qt/qml"));
}

QUrl contentViewURL() {
  return QStringLiteral("qrc:/qt/qml/Kestrivane/ContentView.qml");
}

}  // namespace kestrivane
