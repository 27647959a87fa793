import QtQuick

/// The Box of renderers that draw with a graphics card.
Rectangle {}
