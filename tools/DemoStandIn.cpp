// A demo stand-in for the suite's sibling programs: shows which program the front end started
// and ends when the operator closes it. Not part of the front end; the demo's "Kestrdrw.exe" and
// the others start it with the program's description.
#include <QApplication>
#include <QMessageBox>

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    const QString program = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("a sibling program");
    QMessageBox box(QMessageBox::Information, QStringLiteral("Kestrova demo stand-in"),
                    QStringLiteral("%1\n\nThis is a demo stand-in, not the real program.\n"
                                   "The front end waits until this window is closed.")
                        .arg(program),
                    QMessageBox::Close);
    box.exec();
    return 0;
}
