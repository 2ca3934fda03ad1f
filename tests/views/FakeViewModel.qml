// Stands in for ViewModelObject: the same properties and operations, and a record of what was called.
import QtQuick

QtObject {
    id: fake

    readonly property ListModel monitoredFolders: ListModel {}
    property bool isProcessing: false
    property bool showSuccessNotifications: true
    property bool isRussian: false

    // One array for each call: the name of the operation and its arguments.
    property var calls: []

    function addFolders(urls) {
        calls.push(["addFolders", urls.map(url => url.toString())])
    }
    function selectFolders() {
        calls.push(["selectFolders"])
    }
    function removeFolder(index) {
        calls.push(["removeFolder", index])
        monitoredFolders.remove(index)
    }
    function checkForUpdates() {
        calls.push(["checkForUpdates"])
    }
    function quit() {
        calls.push(["quit"])
    }

    // Lists the folder at `path`.
    function watch(path) {
        const end = path.lastIndexOf("/")
        monitoredFolders.append({
            url: "file://" + path,
            name: path.slice(end + 1),
            parentPath: path.slice(0, end)
        })
    }
}
