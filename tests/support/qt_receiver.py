#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only

"""A Qt program's window that takes drops; it prints what xdnd_receiver.py prints.

Usage: qt_receiver.py X Y WIDTH HEIGHT (Debian's Python, which has PyQt)
"""
import sys

from PyQt5.QtCore import Qt
from PyQt5.QtWidgets import QApplication, QWidget


class Receiver(QWidget):
    def paintEvent(self, _event):
        print("ready", flush=True)

    def dragEnterEvent(self, event):
        event.acceptProposedAction()

    def dragMoveEvent(self, event):
        event.acceptProposedAction()
        print("over", flush=True)

    def dropEvent(self, event):
        event.acceptProposedAction()
        print(bytes(event.mimeData().data("text/uri-list")).decode(), flush=True)


application = QApplication(sys.argv)
window = Receiver(None, Qt.X11BypassWindowManagerHint)
window.setAcceptDrops(True)
window.setGeometry(*map(int, sys.argv[1:5]))
window.show()
window.raise_()
sys.exit(application.exec_())
