// A line of text.
SettingsField {}
