// Asks before the helper is taken away and registered anew.
QuestionDialog {
    id: root

    required property var banner
    signal confirmed()

    question: banner.resetConfirmationTitle
    text: banner.resetConfirmationText
    yes: banner.confirmReset
    no: banner.cancelReset
    onAnswered: yes => {
        close()
        if (yes) confirmed()
    }
}
