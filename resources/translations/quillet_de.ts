<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>BackendSentences</name>
    <message>
        <source>Opening the song…</source>
        <translation>Das Stück wird geöffnet …</translation>
    </message>
    <message>
        <source>Decoding the song…</source>
        <translation>Das Stück wird gelesen …</translation>
    </message>
    <message>
        <source>Loading the model…</source>
        <translation>Das Modell wird geladen …</translation>
    </message>
    <message>
        <source>Separating…</source>
        <translation>Wird getrennt …</translation>
    </message>
    <message>
        <source>Writing the stems…</source>
        <translation>Die Spuren werden geschrieben …</translation>
    </message>
    <message>
        <source>Done.</source>
        <translation>Fertig.</translation>
    </message>
    <message>
        <source>Fetching the model: %1 of %2</source>
        <translation>Das Modell wird geladen: %1 von %2</translation>
    </message>
    <message>
        <source>The separation was ended by the system, probably for lack of memory. Close other programs and try again.</source>
        <translation>Das System hat die Spurentrennung beendet, vermutlich weil der Arbeitsspeicher nicht reicht. Schließen Sie andere Programme und versuchen Sie es noch einmal.</translation>
    </message>
    <message>
        <source>There is not enough memory for the separation. Close other programs and try again.</source>
        <translation>Der Arbeitsspeicher reicht für die Spurentrennung nicht. Schließen Sie andere Programme und versuchen Sie es noch einmal.</translation>
    </message>
    <message>
        <source>The separation ended without saying why (%1). Try again.</source>
        <translation>Die Spurentrennung endete, ohne zu sagen, warum (%1). Versuchen Sie es noch einmal.</translation>
    </message>
    <message>
        <source>The separation could not be carried out (%1: %2). Try again.</source>
        <translation>Die Spurentrennung ließ sich nicht ausführen (%1: %2). Versuchen Sie es noch einmal.</translation>
    </message>
    <message>
        <source>The model “%1” cannot be loaded (%2). Remove that file, and try again.</source>
        <translation>Das Modell „%1“ lässt sich nicht laden (%2). Löschen Sie diese Datei und versuchen Sie es noch einmal.</translation>
    </message>
    <message>
        <source>The model “%1” does not make the six stems. Remove that file, and try again.</source>
        <translation>Das Modell „%1“ erzeugt nicht die sechs Spuren. Löschen Sie diese Datei und versuchen Sie es noch einmal.</translation>
    </message>
    <message>
        <source>The stems cannot be written to %1 (%2). Choose another folder for them, or make this one writable.</source>
        <translation>Die Spuren lassen sich nicht in %1 schreiben (%2). Wählen Sie einen anderen Ordner für sie oder machen Sie diesen beschreibbar.</translation>
    </message>
    <message>
        <source>The stems cannot be put into %1 (%2). See whether that folder is still there and writable, and try again.</source>
        <translation>Die Spuren lassen sich nicht in %1 ablegen (%2). Sehen Sie nach, ob es diesen Ordner noch gibt und er beschreibbar ist, und versuchen Sie es noch einmal.</translation>
    </message>
    <message>
        <source>This song is being separated already, by another window or program; wait until it is done there.</source>
        <translation>Dieses Stück wird bereits von einem anderen Fenster oder Programm getrennt; warten Sie, bis es dort fertig ist.</translation>
    </message>
    <message>
        <source>The tool %1 is missing. Install it (Debian&apos;s package ffmpeg), and try again.</source>
        <translation>Das Werkzeug %1 fehlt. Installieren Sie es (Debians Paket ffmpeg) und versuchen Sie es noch einmal.</translation>
    </message>
    <message>
        <source>%1 is not a file. Open a song, and separate that.</source>
        <translation>%1 ist keine Datei. Öffnen Sie ein Stück und trennen Sie dieses.</translation>
    </message>
    <message>
        <source>The song %1 cannot be read (%2). Open it again, and try again.</source>
        <translation>Das Stück %1 lässt sich nicht lesen (%2). Öffnen Sie es neu und versuchen Sie es noch einmal.</translation>
    </message>
    <message>
        <source>The song %1 has changed while it was being separated. Try again.</source>
        <translation>Das Stück %1 hat sich geändert, während es getrennt wurde. Versuchen Sie es noch einmal.</translation>
    </message>
    <message>
        <source>The song %1 cannot be opened.</source>
        <translation>Das Stück %1 lässt sich nicht öffnen.</translation>
    </message>
    <message>
        <source>There is no sound in %1. Open another song.</source>
        <translation>In %1 ist kein Ton. Öffnen Sie ein anderes Stück.</translation>
    </message>
    <message>
        <source>The sound of %1 cannot be decoded. See whether it plays, or try another copy of it.</source>
        <translation>Der Ton von %1 lässt sich nicht entschlüsseln. Hören Sie, ob es spielt, oder nehmen Sie eine andere Kopie davon.</translation>
    </message>
    <message>
        <source>The song could not be resampled (ffmpeg has failed). Try again.</source>
        <translation>Die Abtastrate des Stücks ließ sich nicht umrechnen (ffmpeg ist fehlgeschlagen). Versuchen Sie es noch einmal.</translation>
    </message>
    <message>
        <source>A stem could not be resampled (ffmpeg has failed). Try again.</source>
        <translation>Die Abtastrate einer Spur ließ sich nicht umrechnen (ffmpeg ist fehlgeschlagen). Versuchen Sie es noch einmal.</translation>
    </message>
    <message>
        <source>The folder “%1”, which %2 names, cannot be read (%3). Correct or unset the variable, and start the program again.</source>
        <translation>Der Ordner „%1“, den %2 nennt, lässt sich nicht lesen (%3). Berichtigen oder entfernen Sie die Variable und starten Sie das Programm neu.</translation>
    </message>
    <message>
        <source>There is no .safetensors file in “%1”, which %2 names. Put %3 there and try again.</source>
        <translation>In „%1“, das %2 nennt, ist keine .safetensors-Datei. Legen Sie %3 dort ab und versuchen Sie es noch einmal.</translation>
    </message>
    <message>
        <source>The model cannot be kept in “%1” (%2). Make room there, and try again.</source>
        <translation>Das Modell lässt sich nicht in „%1“ ablegen (%2). Schaffen Sie dort Platz und versuchen Sie es noch einmal.</translation>
    </message>
    <message>
        <source>The stems take %1, and there are %2 where they are kept. Make room there, and try again.</source>
        <translation>Die Spuren brauchen %1, und wo sie liegen, sind %2 frei. Schaffen Sie dort Platz und versuchen Sie es noch einmal.</translation>
    </message>
    <message>
        <source>The separation could not go on (%1). Try again.</source>
        <translation>Die Spurentrennung konnte nicht weitergehen (%1). Versuchen Sie es noch einmal.</translation>
    </message>
    <message>
        <source>The separation has failed (%1: %2). Try again.</source>
        <translation>Die Spurentrennung ist fehlgeschlagen (%1: %2). Versuchen Sie es noch einmal.</translation>
    </message>
    <message>
        <source>The dependencies of the separation are not whole (%1). Remove them in the settings, and try again.</source>
        <translation>Die Abhängigkeiten der Spurentrennung sind nicht vollständig (%1). Entfernen Sie sie in den Einstellungen und versuchen Sie es noch einmal.</translation>
    </message>
    <message>
        <source>There is no room left for the stems (%1). Make room where they are kept, and try again.</source>
        <translation>Für die Spuren ist kein Platz mehr (%1). Schaffen Sie Platz, wo sie liegen, und versuchen Sie es noch einmal.</translation>
    </message>
    <message>
        <source>The model that was fetched is not what it should be. Try again, over another network if need be.</source>
        <translation>Das geladene Modell ist nicht, was es sein sollte. Versuchen Sie es noch einmal, nötigenfalls über ein anderes Netz.</translation>
    </message>
    <message>
        <source>The model (%1) could not be fetched (%2). See to the network, and try again; it goes on from there.</source>
        <translation>Das Modell (%1) ließ sich nicht laden (%2). Prüfen Sie die Verbindung zum Netz und versuchen Sie es noch einmal; es geht dort weiter.</translation>
    </message>
</context>
<context>
    <name>Commands</name>
    <message>
        <source>Open File...</source>
        <translation>Datei öffnen …</translation>
    </message>
    <message>
        <source>File</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>Open from URL...</source>
        <translation>Aus dem Netz öffnen …</translation>
    </message>
    <message>
        <source>Separate Stems…</source>
        <translation>Spuren trennen …</translation>
    </message>
    <message>
        <source>Cleanup Stems</source>
        <translation>Spuren löschen</translation>
    </message>
    <message>
        <source>Export Stems…</source>
        <translation>Spuren exportieren …</translation>
    </message>
    <message>
        <source>Settings…</source>
        <translation>Einstellungen …</translation>
    </message>
    <message>
        <source>Stop and Reset</source>
        <translation>Anhalten und zurück</translation>
    </message>
    <message>
        <source>Playback</source>
        <translation>Wiedergabe</translation>
    </message>
    <message>
        <source>Toggle Loop</source>
        <translation>Schleife ein/aus</translation>
    </message>
    <message>
        <source>Toggle Hold [H]</source>
        <translation>Halten ein/aus [H]</translation>
    </message>
    <message>
        <source>Hold Step Forward [→]</source>
        <translation>Halten: Schritt vor [→]</translation>
    </message>
    <message>
        <source>Hold Step Backward [←]</source>
        <translation>Halten: Schritt zurück [←]</translation>
    </message>
    <message>
        <source>Decrease Speed</source>
        <translation>Langsamer</translation>
    </message>
    <message>
        <source>Speed</source>
        <translation>Tempo</translation>
    </message>
    <message>
        <source>Increase Speed</source>
        <translation>Schneller</translation>
    </message>
    <message>
        <source>Pitch Up 1 Cent</source>
        <translation>1 Cent höher</translation>
    </message>
    <message>
        <source>Pitch</source>
        <translation>Tonhöhe</translation>
    </message>
    <message>
        <source>Pitch Down 1 Cent</source>
        <translation>1 Cent tiefer</translation>
    </message>
    <message>
        <source>Quillet Help</source>
        <translation>Hilfe zu Quillet</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>Hilfe</translation>
    </message>
    <message>
        <source>Check for Updates...</source>
        <translation>Nach Updates suchen …</translation>
    </message>
    <message>
        <source>Undo</source>
        <translation>Rückgängig</translation>
    </message>
    <message>
        <source>Edit</source>
        <translation>Bearbeiten</translation>
    </message>
    <message>
        <source>Redo</source>
        <translation>Wiederholen</translation>
    </message>
    <message>
        <source>Start Here</source>
        <translation>Hier beginnen</translation>
    </message>
    <message>
        <source>Region</source>
        <translation>Bereich</translation>
    </message>
    <message>
        <source>End Here</source>
        <translation>Hier enden</translation>
    </message>
    <message>
        <source>Start 10 ms Earlier</source>
        <translation>Anfang 10 ms früher</translation>
    </message>
    <message>
        <source>Start 10 ms Later</source>
        <translation>Anfang 10 ms später</translation>
    </message>
    <message>
        <source>End 10 ms Earlier</source>
        <translation>Ende 10 ms früher</translation>
    </message>
    <message>
        <source>End 10 ms Later</source>
        <translation>Ende 10 ms später</translation>
    </message>
    <message>
        <source>Back by Its Length</source>
        <translation>Um seine Länge zurück</translation>
    </message>
    <message>
        <source>On by Its Length</source>
        <translation>Um seine Länge weiter</translation>
    </message>
    <message>
        <source>Whole Song</source>
        <translation>Ganzer Song</translation>
    </message>
    <message>
        <source>Save Loop</source>
        <translation>Schleife sichern</translation>
    </message>
    <message>
        <source>Loops</source>
        <translation>Schleifen</translation>
    </message>
    <message>
        <source>Play Loops as a List</source>
        <translation>Schleifen nacheinander spielen</translation>
    </message>
    <message>
        <source>Export as Heard…</source>
        <translation>Exportieren, wie es klingt …</translation>
    </message>
    <message>
        <source>Save Loops to a File…</source>
        <translation>Schleifen in Datei sichern …</translation>
    </message>
    <message>
        <source>Load Loops from a File…</source>
        <translation>Schleifen aus Datei laden …</translation>
    </message>
    <message>
        <source>Follow Play Head</source>
        <translation>Der Abspielposition folgen</translation>
    </message>
    <message>
        <source>View</source>
        <translation>Darstellung</translation>
    </message>
    <message>
        <source>Previous Song</source>
        <translation>Voriger Song</translation>
    </message>
    <message>
        <source>Next Song</source>
        <translation>Nächster Song</translation>
    </message>
    <message>
        <source>Trainer</source>
        <translation>Trainer</translation>
    </message>
</context>
<context>
    <name>DownloadError</name>
    <message>
        <source>Download failed (exit code %1).</source>
        <translation>Der Download ist fehlgeschlagen (Exit-Code %1).</translation>
    </message>
    <message>
        <source>Download failed: %1</source>
        <translation>Der Download ist fehlgeschlagen: %1</translation>
    </message>
    <message>
        <source>uv not found inside the app bundle.</source>
        <translation>uv fehlt im Programmpaket.</translation>
    </message>
    <message>
        <source>yt-dlp not found inside the app bundle.</source>
        <translation>yt-dlp fehlt im Programmpaket.</translation>
    </message>
    <message>
        <source>ffmpeg not found inside the app bundle.</source>
        <translation>ffmpeg fehlt im Programmpaket.</translation>
    </message>
    <message>
        <source>Download succeeded but no output file path was reported.</source>
        <translation>Der Download ist gelungen, aber der Pfad der Datei wurde nicht gemeldet.</translation>
    </message>
</context>
<context>
    <name>FileLoader</name>
    <message>
        <source>Could not read audio file duration.</source>
        <translation>Die Länge der Audiodatei ist nicht zu lesen.</translation>
    </message>
    <message>
        <source>File duration exceeds the maximum supported length (999:59.999).</source>
        <translation>Die Datei ist länger als erlaubt (999:59,999).</translation>
    </message>
    <message>
        <source>Could not read the audio of the file. It may be damaged, or was changed while it was read.</source>
        <translation>Der Ton der Datei ist nicht zu lesen. Sie ist vielleicht beschädigt oder wurde beim Lesen verändert.</translation>
    </message>
    <message>
        <source>Loading cached waveform...</source>
        <translation>Gespeicherte Wellenform wird geladen …</translation>
    </message>
    <message>
        <source>Generating waveform...</source>
        <translation>Wellenform wird berechnet …</translation>
    </message>
    <message>
        <source>Generating waveform... %1%</source>
        <translation>Wellenform wird berechnet … %1 %</translation>
    </message>
</context>
<context>
    <name>RunningDownload</name>
    <message>
        <source>%1 KB</source>
        <translation>%1 KB</translation>
    </message>
    <message>
        <source>%1 MB</source>
        <translation>%1 MB</translation>
    </message>
    <message>
        <source>Connecting…</source>
        <translation>Verbinde …</translation>
    </message>
    <message>
        <source>Converting…</source>
        <translation>Wandle um …</translation>
    </message>
    <message>
        <source>%1 % of %2</source>
        <translation>%1 % von %2</translation>
    </message>
    <message>
        <source>%1 received</source>
        <translation>%1 empfangen</translation>
    </message>
</context>
<context>
    <name>SleepInhibitor</name>
    <message>
        <source>A song is playing</source>
        <translation>Ein Stück läuft</translation>
    </message>
</context>
<context>
    <name>StemControlsView</name>
    <message>
        <source>Vocals</source>
        <translation>Gesang</translation>
    </message>
    <message>
        <source>Drums</source>
        <translation>Schlagzeug</translation>
    </message>
    <message>
        <source>Bass</source>
        <translation>Bass</translation>
    </message>
    <message>
        <source>Guitar</source>
        <translation>Gitarre</translation>
    </message>
    <message>
        <source>Piano</source>
        <translation>Klavier</translation>
    </message>
    <message>
        <source>Other</source>
        <translation>Andere</translation>
    </message>
</context>
<context>
    <name>StemError</name>
    <message>
        <source>Required binary &apos;%1&apos; not found in app bundle.</source>
        <translation>Das Programm „%1“ fehlt im Programmpaket.</translation>
    </message>
    <message>
        <source>Process exited with code %1.</source>
        <translation>Der Prozess endete mit Code %1.</translation>
    </message>
    <message>
        <source>The folder “%1”, which is set for the dependencies of stem separation, holds other files. Choose another one; nothing was changed.</source>
        <translation>Der Ordner „%1“, der für die Abhängigkeiten der Spurentrennung eingestellt ist, enthält andere Dateien. Wählen Sie einen anderen; verändert wurde nichts.</translation>
    </message>
    <message>
        <source>The set-up needs %1 GB of free space for “%2”, and there are %3 GB. Free some and try again.</source>
        <translation>Die Einrichtung braucht %1 GB freien Platz für „%2“; frei sind %3 GB. Schaffen Sie Platz und versuchen Sie es noch einmal.</translation>
    </message>
</context>
<context>
    <name>StemExport</name>
    <message>
        <source>The stems could not be copied to “%1”: %2.</source>
        <translation>Die Spuren konnten nicht nach „%1“ kopiert werden: %2.</translation>
    </message>
</context>
<context>
    <name>StemSeparator</name>
    <message>
        <source>Separation failed (exit %1)</source>
        <translation>Die Trennung ist fehlgeschlagen (Exit-Code %1)</translation>
    </message>
</context>
<context>
    <name>YtDlpUpdater</name>
    <message>
        <source>The newest yt-dlp could not be fetched.</source>
        <translation>Das neueste yt-dlp ließ sich nicht laden.</translation>
    </message>
</context>
<context>
    <name>quillet::AppState</name>
    <message>
        <source>Loop %1</source>
        <translation>Schleife %1</translation>
    </message>
</context>
<context>
    <name>quillet::AppcastUpdater</name>
    <message>
        <source>This build of Quillet has no update feed. Whoever gave you the program also has its updates.</source>
        <translation>Diese Fassung von Quillet kennt keinen Update-Feed. Updates gibt es dort, woher das Programm kommt.</translation>
    </message>
    <message>
        <source>The update feed “%1” is no secure web address (https).</source>
        <translation>Der Update-Feed „%1“ ist keine sichere Web-Adresse (https).</translation>
    </message>
    <message>
        <source>The update feed is too long to be one.</source>
        <translation>Der Update-Feed ist zu lang, um einer zu sein.</translation>
    </message>
    <message>
        <source>The update feed leads elsewhere again and again, or to an address that is not secure.</source>
        <translation>Der Update-Feed leitet immer weiter oder auf eine unsichere Adresse.</translation>
    </message>
    <message>
        <source>The update feed cannot be reached: %1. Try again later.</source>
        <translation>Der Update-Feed ist nicht zu erreichen: %1. Versuchen Sie es später noch einmal.</translation>
    </message>
    <message>
        <source>What the update feed answers cannot be read. Try again later.</source>
        <translation>Die Antwort des Update-Feeds ist nicht zu lesen. Versuchen Sie es später noch einmal.</translation>
    </message>
</context>
<context>
    <name>quillet::BusyIndicator</name>
    <message>
        <source>Loading</source>
        <translation>Lädt</translation>
    </message>
</context>
<context>
    <name>quillet::CacheSettings</name>
    <message>
        <source>1 MB</source>
        <translation>1 MB</translation>
    </message>
    <message>
        <source>50 MB</source>
        <translation>50 MB</translation>
    </message>
    <message>
        <source>100 MB</source>
        <translation>100 MB</translation>
    </message>
    <message>
        <source>Unlimited</source>
        <translation>Unbegrenzt</translation>
    </message>
    <message>
        <source>Custom</source>
        <translation>Eigene</translation>
    </message>
    <message>
        <source>7 days</source>
        <translation>7 Tage</translation>
    </message>
    <message>
        <source>14 days</source>
        <translation>14 Tage</translation>
    </message>
    <message>
        <source>1 month</source>
        <translation>1 Monat</translation>
    </message>
    <message>
        <source>6 months</source>
        <translation>6 Monate</translation>
    </message>
    <message>
        <source>1 year</source>
        <translation>1 Jahr</translation>
    </message>
    <message>
        <source>Indefinite</source>
        <translation>Unbegrenzt</translation>
    </message>
    <message>
        <source>Max Cache Size</source>
        <translation>Größe höchstens</translation>
    </message>
    <message>
        <source>Size limit</source>
        <translation>Größengrenze</translation>
    </message>
    <message>
        <source>MB</source>
        <translation>MB</translation>
    </message>
    <message>
        <source>Type a whole number of megabytes, at least 1.</source>
        <translation>Eine ganze Zahl von Megabytes, mindestens 1.</translation>
    </message>
    <message>
        <source>Max Cache Age</source>
        <translation>Alter höchstens</translation>
    </message>
    <message>
        <source>Age limit</source>
        <translation>Altersgrenze</translation>
    </message>
    <message>
        <source>Days</source>
        <translation>Tage</translation>
    </message>
    <message>
        <source>days</source>
        <translation>Tage</translation>
    </message>
    <message>
        <source>Type a whole number of days, at least 1.</source>
        <translation>Eine ganze Zahl von Tagen, mindestens 1.</translation>
    </message>
    <message>
        <source>Entries</source>
        <translation>Einträge</translation>
    </message>
    <message>
        <source>Total size</source>
        <translation>Gesamtgröße</translation>
    </message>
    <message>
        <source>Clear Cache…</source>
        <translation>Cache leeren …</translation>
    </message>
    <message>
        <source>%1 MB</source>
        <translation>%1 MB</translation>
    </message>
    <message>
        <source>Clear all cached waveforms and saved song settings?</source>
        <translation>Alle gespeicherten Wellenformen und Einstellungen der Stücke löschen?</translation>
    </message>
    <message>
        <source>Clear Cache &amp; Settings</source>
        <translation>Cache und Einstellungen löschen</translation>
    </message>
</context>
<context>
    <name>quillet::CacheSettingsView</name>
    <message>
        <source>Song Downloads</source>
        <translation>Stücke aus dem Netz</translation>
    </message>
    <message>
        <source>Stem Separation</source>
        <translation>Spurentrennung</translation>
    </message>
    <message>
        <source>Updates</source>
        <translation>Updates</translation>
    </message>
    <message>
        <source>Cache</source>
        <translation>Cache</translation>
    </message>
    <message>
        <source>Language</source>
        <translation>Sprache</translation>
    </message>
    <message>
        <source>Keys</source>
        <translation>Tasten</translation>
    </message>
</context>
<context>
    <name>quillet::ClosableNotice</name>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
</context>
<context>
    <name>quillet::ContentView</name>
    <message>
        <source>There is no sound device: playback goes on without sound until there is one.</source>
        <translation>Es gibt kein Audiogerät: Bis es eines gibt, läuft die Wiedergabe ohne Ton.</translation>
    </message>
    <message>
        <source>“%1” is not an audio file.</source>
        <translation>„%1“ ist keine Audiodatei.</translation>
    </message>
    <message>
        <source>Open File...</source>
        <translation>Datei öffnen …</translation>
    </message>
    <message>
        <source>Audio files</source>
        <translation>Audiodateien</translation>
    </message>
    <message>
        <source>All files</source>
        <translation>Alle Dateien</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>Fehler</translation>
    </message>
    <message>
        <source>Unknown error</source>
        <translation>Unbekannter Fehler</translation>
    </message>
    <message>
        <source>There are no songs in “%1”.</source>
        <translation>In „%1“ sind keine Songs.</translation>
    </message>
</context>
<context>
    <name>quillet::DownloadNotice</name>
    <message>
        <source>Stop</source>
        <translation>Anhalten</translation>
    </message>
    <message>
        <source>The download goes on: %1</source>
        <translation>Der Download läuft weiter: %1</translation>
    </message>
    <message>
        <source>The download was stopped. Opening the same address again resumes it.</source>
        <translation>Der Download wurde angehalten. Dieselbe Adresse noch einmal zu öffnen setzt ihn fort.</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Öffnen</translation>
    </message>
    <message>
        <source>“%1” has been downloaded.</source>
        <translation>„%1“ ist da.</translation>
    </message>
    <message>
        <source>Discard</source>
        <translation>Verwerfen</translation>
    </message>
    <message>
        <source>Removes what has been received so far</source>
        <translation>Löscht, was bisher empfangen wurde</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
</context>
<context>
    <name>quillet::DownloadSettings</name>
    <message>
        <source>Download folder</source>
        <translation>Download-Ordner</translation>
    </message>
    <message>
        <source>Update</source>
        <translation>Aktualisieren</translation>
    </message>
    <message>
        <source>Undo</source>
        <translation>Rückgängig</translation>
    </message>
    <message>
        <source>Update yt-dlp</source>
        <translation>yt-dlp aktualisieren</translation>
    </message>
    <message>
        <source>Fetches the newest yt-dlp: sites change, and an old one cannot read them any more</source>
        <translation>Lädt das neueste yt-dlp: Seiten ändern sich, und ein altes kann sie nicht mehr lesen</translation>
    </message>
    <message>
        <source>Undo the update of yt-dlp</source>
        <translation>Aktualisierung von yt-dlp rückgängig</translation>
    </message>
    <message>
        <source>Goes back to the yt-dlp that came with Quillet</source>
        <translation>Kehrt zu dem yt-dlp zurück, das mit Quillet kam</translation>
    </message>
    <message>
        <source>The newest yt-dlp is being fetched…</source>
        <translation>Das neueste yt-dlp wird geladen …</translation>
    </message>
    <message>
        <source>From now on songs are fetched with yt-dlp %1.</source>
        <translation>Stücke werden ab jetzt mit yt-dlp %1 geladen.</translation>
    </message>
    <message>
        <source>The yt-dlp that came with Quillet is used. There is no newer one, or it was undone.</source>
        <translation>Verwendet wird das yt-dlp, das mit Quillet kam. Es gibt kein neueres, oder die Aktualisierung wurde rückgängig gemacht.</translation>
    </message>
</context>
<context>
    <name>quillet::DropOverlay</name>
    <message>
        <source>Drop Audio File Here</source>
        <translation>Audiodatei hier ablegen</translation>
    </message>
    <message>
        <source>File Not Supported</source>
        <translation>Datei wird nicht unterstützt</translation>
    </message>
</context>
<context>
    <name>quillet::EQView</name>
    <message>
        <source>60Hz</source>
        <translation>60 Hz</translation>
    </message>
    <message>
        <source>250Hz</source>
        <translation>250 Hz</translation>
    </message>
    <message>
        <source>1kHz</source>
        <translation>1 kHz</translation>
    </message>
    <message>
        <source>4kHz</source>
        <translation>4 kHz</translation>
    </message>
    <message>
        <source>12kHz</source>
        <translation>12 kHz</translation>
    </message>
    <message>
        <source>EQ</source>
        <translation>EQ</translation>
    </message>
    <message>
        <source>Reset</source>
        <translation>Zurück</translation>
    </message>
    <message>
        <source>Reset EQ</source>
        <translation>EQ zurücksetzen</translation>
    </message>
    <message>
        <source>EQ gain at %1</source>
        <translation>EQ-Pegel bei %1</translation>
    </message>
    <message>
        <source>Stereo</source>
        <translation>Stereo</translation>
    </message>
    <message>
        <source>Left</source>
        <translation>Links</translation>
    </message>
    <message>
        <source>Right</source>
        <translation>Rechts</translation>
    </message>
    <message>
        <source>Mono</source>
        <translation>Mono</translation>
    </message>
    <message>
        <source>No Middle</source>
        <translation>Ohne Mitte</translation>
    </message>
    <message>
        <source>Channels</source>
        <translation>Kanäle</translation>
    </message>
    <message>
        <source>Which channels are heard. “No Middle” leaves out what both sides have alike, as voices often are.</source>
        <translation>Welche Kanäle zu hören sind. „Ohne Mitte“ lässt weg, was beide Seiten gleich haben, wie oft den Gesang.</translation>
    </message>
</context>
<context>
    <name>quillet::EmptyScreen</name>
    <message>
        <source>Open File...</source>
        <translation>Datei öffnen …</translation>
    </message>
    <message>
        <source>Open from URL…</source>
        <translation>Aus dem Netz öffnen …</translation>
    </message>
    <message>
        <source>Clear Recents</source>
        <translation>Liste leeren</translation>
    </message>
    <message>
        <source>Recent Files</source>
        <translation>Zuletzt geöffnet</translation>
    </message>
    <message>
        <source>Open a song to practise, or drop songs or a folder here.</source>
        <translation>Öffnen Sie einen Song zum Üben oder ziehen Sie Songs oder einen Ordner hierher.</translation>
    </message>
    <message>
        <source>Close List</source>
        <translation>Liste schließen</translation>
    </message>
    <message>
        <source>Songs, %1</source>
        <comment>The place in the list</comment>
        <translation>Songs, %1</translation>
    </message>
</context>
<context>
    <name>quillet::ExportFlow</name>
    <message>
        <source>Export</source>
        <translation>Exportieren</translation>
    </message>
    <message>
        <source>Export as Heard</source>
        <translation>Exportieren, wie es klingt</translation>
    </message>
    <message>
        <source>With the present speed, pitch, equalizer, channels and stems. A list of loops has the loops’ own speeds and pitches.</source>
        <translation>Mit dem jetzigen Tempo, der Tonhöhe, dem Equalizer, den Kanälen und Spuren. Eine Liste von Schleifen hat deren eigene Tempi und Tonhöhen.</translation>
    </message>
    <message>
        <source>What is exported</source>
        <translation>Was exportiert wird</translation>
    </message>
    <message>
        <source>Region</source>
        <translation>Bereich</translation>
    </message>
    <message>
        <source>Whole Song</source>
        <translation>Ganzer Song</translation>
    </message>
    <message>
        <source>Loops as a List</source>
        <translation>Schleifen nacheinander</translation>
    </message>
    <message>
        <source>times</source>
        <translation>Mal</translation>
    </message>
    <message>
        <source>How often it is played</source>
        <translation>Wie oft es gespielt wird</translation>
    </message>
    <message>
        <source>Kind of file</source>
        <translation>Art der Datei</translation>
    </message>
    <message>
        <source>What</source>
        <translation>Was</translation>
    </message>
    <message>
        <source>How often</source>
        <translation>Wie oft</translation>
    </message>
    <message>
        <source>File</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Choose Folder…</source>
        <translation>Ordner wählen …</translation>
    </message>
</context>
<context>
    <name>quillet::ExportNotice</name>
    <message>
        <source>Exporting “%1”…</source>
        <translation>„%1“ wird geschrieben …</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Anhalten</translation>
    </message>
    <message>
        <source>Exporting “%1”: %2%</source>
        <translation>„%1“ wird geschrieben: %2 %</translation>
    </message>
    <message>
        <source>Stop the export</source>
        <translation>Export anhalten</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>“%1” has been written.</source>
        <translation>„%1“ ist geschrieben.</translation>
    </message>
</context>
<context>
    <name>quillet::Fader</name>
    <message>
        <source>-∞ dB</source>
        <translation>-∞ dB</translation>
    </message>
    <message>
        <source>%1 dB</source>
        <translation>%1 dB</translation>
    </message>
</context>
<context>
    <name>quillet::FolderRow</name>
    <message>
        <source>Select</source>
        <translation>Wählen</translation>
    </message>
    <message>
        <source>Select: %1</source>
        <translation>Wählen: %1</translation>
    </message>
    <message>
        <source>Reset to Default</source>
        <translation>Zurücksetzen</translation>
    </message>
    <message>
        <source>Reset to default: %1</source>
        <translation>Zurücksetzen: %1</translation>
    </message>
</context>
<context>
    <name>quillet::HelpSheet</name>
    <message>
        <source>Getting Started</source>
        <translation>Erste Schritte</translation>
    </message>
    <message>
        <source>1. Press Cmd+O or click &quot;Open File...&quot; to load an audio file.
2. The waveform will appear after loading.
3. Drag on the waveform to select a region, or use the Start/End pickers below.
4. Press Space to play. The selected region loops when Loop is enabled.
5. Adjust Speed and Pitch as needed. Settings are saved automatically per file.</source>
        <translation>1. Mit Cmd+O oder „Datei öffnen …“ eine Audiodatei öffnen.
2. Danach erscheint ihre Wellenform.
3. Mit der Maus auf der Wellenform einen Bereich ziehen, oder darunter Anfang und Ende eingeben.
4. Die Leertaste spielt. Der Bereich wiederholt sich, wenn die Schleife eingeschaltet ist.
5. Tempo und Tonhöhe nach Wunsch ändern. Die Einstellungen werden für jede Datei von selbst gespeichert.</translation>
    </message>
    <message>
        <source>Waveform</source>
        <translation>Wellenform</translation>
    </message>
    <message>
        <source>• Drag the orange lines to move the region start and end.
• Click and drag on empty space to draw a new region.
• Pinch to zoom in/out (1x–50x). Two-finger scroll to pan when zoomed.
• Use the +/- zoom buttons, Fit Track, and Fit Region buttons for quick navigation.</source>
        <translation>• Die orangen Linien ziehen, um Anfang und Ende des Bereichs zu bewegen.
• Auf freier Fläche ziehen, um einen neuen Bereich zu zeichnen.
• Mit zwei Fingern zoomen (1x–50x) und, wenn gezoomt ist, verschieben.
• Die Knöpfe + und -, „Ganzes Stück“ und „Bereich“ führen schnell zum Ziel.</translation>
    </message>
    <message>
        <source>Speed</source>
        <translation>Tempo</translation>
    </message>
    <message>
        <source>• Range: 5%–300%. Pitch is preserved at all speeds.
• Click the value field, type a number, and press Enter.
• Prefix with + or - to adjust relative to the displayed value (e.g., &quot;+10&quot; adds 10%).
• Use the Step picker to set how much the +/- buttons move per click.
• Cmd+Left decreases speed, Cmd+Right increases speed.</source>
        <translation>• Von 5 % bis 300 %. Die Tonhöhe bleibt bei jedem Tempo.
• In das Feld klicken, eine Zahl eingeben und die Eingabetaste drücken.
• Mit + oder - davor gilt die Zahl vom angezeigten Wert aus („+10“ gibt 10 % dazu).
• Die Schrittweite bestimmt, um wie viel + und - ändern.
• Cmd+Links wird langsamer, Cmd+Rechts schneller.</translation>
    </message>
    <message>
        <source>Pitch</source>
        <translation>Tonhöhe</translation>
    </message>
    <message>
        <source>• Range: -1200 to +1200 cents. 100 cents = 1 semitone.
• Click the value field, type a number (including negative), and press Enter.
• Cmd+Up raises pitch 1 cent, Cmd+Down lowers pitch 1 cent.
• Display is truncated to integer cents.</source>
        <translation>• Von -1200 bis +1200 Cent. 100 Cent sind ein Halbton.
• In das Feld klicken, eine Zahl (auch eine negative) eingeben und die Eingabetaste drücken.
• Cmd+Hoch wird 1 Cent höher, Cmd+Runter 1 Cent tiefer.
• Gezeigt werden ganze Cent.</translation>
    </message>
    <message>
        <source>EQ</source>
        <translation>EQ</translation>
    </message>
    <message>
        <source>• Toggle the EQ on/off with the switch. Sliders are hidden when off.
• 5 bands: 60 Hz, 250 Hz, 1 kHz, 4 kHz, 12 kHz.
• Gain range: -12 to +12 dB, snapping to 0.5 dB increments.
• Knob turns accent-colored when a band is non-zero.
• Reset zeros all bands.</source>
        <translation>• Der Schalter schaltet den EQ ein und aus. Die Regler zeigen sich, wenn er an ist.
• 5 Bänder: 60 Hz, 250 Hz, 1 kHz, 4 kHz, 12 kHz.
• Von -12 bis +12 dB, in Schritten von 0,5 dB.
• Ein Knopf ist farbig, wenn sein Band nicht auf 0 steht.
• „Zurück“ setzt alle Bänder auf 0.</translation>
    </message>
    <message>
        <source>Loop</source>
        <translation>Schleife</translation>
    </message>
    <message>
        <source>• Toggle looping with Cmd+L or the Loop switch.
• When on, playback returns to the region start after reaching the end.
• Set a delay (seconds + milliseconds) to pause between iterations.</source>
        <translation>• Mit Cmd+L oder dem Schalter ein- und ausschalten.
• Ist sie an, geht es am Ende des Bereichs an seinem Anfang weiter.
• Eine Pause (Sekunden und Millisekunden) trennt die Durchgänge.</translation>
    </message>
    <message>
        <source>Per-File Settings</source>
        <translation>Einstellungen je Datei</translation>
    </message>
    <message>
        <source>All settings (region, speed, pitch, EQ, loop) are saved automatically.
Settings are restored only when you open a file from the Recent menu.
Opening via &quot;Open File...&quot; always starts with defaults.</source>
        <translation>Alle Einstellungen (Bereich, Tempo, Tonhöhe, EQ, Schleife) werden von selbst gespeichert.
Wiederhergestellt werden sie nur, wenn die Datei aus „Zuletzt“ geöffnet wird.
„Datei öffnen …“ beginnt immer mit den Vorgaben.</translation>
    </message>
    <message>
        <source>Space</source>
        <translation>Leertaste</translation>
    </message>
    <message>
        <source>Play / Pause</source>
        <translation>Spielen / Pause</translation>
    </message>
    <message>
        <source>Cmd+O</source>
        <translation>Cmd+O</translation>
    </message>
    <message>
        <source>Open file</source>
        <translation>Datei öffnen</translation>
    </message>
    <message>
        <source>Cmd+Left</source>
        <translation>Cmd+Links</translation>
    </message>
    <message>
        <source>Decrease speed by step</source>
        <translation>Um einen Schritt langsamer</translation>
    </message>
    <message>
        <source>Cmd+Right</source>
        <translation>Cmd+Rechts</translation>
    </message>
    <message>
        <source>Increase speed by step</source>
        <translation>Um einen Schritt schneller</translation>
    </message>
    <message>
        <source>Cmd+Up</source>
        <translation>Cmd+Hoch</translation>
    </message>
    <message>
        <source>Pitch up 1 cent</source>
        <translation>1 Cent höher</translation>
    </message>
    <message>
        <source>Cmd+Down</source>
        <translation>Cmd+Runter</translation>
    </message>
    <message>
        <source>Pitch down 1 cent</source>
        <translation>1 Cent tiefer</translation>
    </message>
    <message>
        <source>Cmd+L</source>
        <translation>Cmd+L</translation>
    </message>
    <message>
        <source>Toggle loop</source>
        <translation>Schleife ein/aus</translation>
    </message>
    <message>
        <source>Cmd+R</source>
        <translation>Cmd+R</translation>
    </message>
    <message>
        <source>Stop and reset position</source>
        <translation>Anhalten und zurück zum Anfang</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>Hilfe</translation>
    </message>
    <message>
        <source>Done</source>
        <translation>Fertig</translation>
    </message>
    <message>
        <source>Keyboard Shortcuts</source>
        <translation>Tasten</translation>
    </message>
    <message>
        <source>Ctrl+</source>
        <translation>Strg+</translation>
    </message>
    <message>
        <source>Marks, Loops and Trainer</source>
        <translation>Marken, Schleifen und Trainer</translation>
    </message>
    <message>
        <source>[ ]</source>
        <translation>[ ]</translation>
    </message>
    <message>
        <source>Region start, end here</source>
        <translation>Bereich beginnt, endet hier</translation>
    </message>
    <message>
        <source>Cmd+S</source>
        <translation>Cmd+S</translation>
    </message>
    <message>
        <source>Save loop</source>
        <translation>Schleife sichern</translation>
    </message>
    <message>
        <source>Cmd+1…0</source>
        <translation>Cmd+1…0</translation>
    </message>
    <message>
        <source>Call up a saved loop</source>
        <translation>Gesicherte Schleife aufrufen</translation>
    </message>
    <message>
        <source>Cmd+Z</source>
        <translation>Cmd+Z</translation>
    </message>
    <message>
        <source>Undo</source>
        <translation>Rückgängig</translation>
    </message>
    <message>
        <source>Several Songs, a Closer Look</source>
        <translation>Mehrere Songs und der Blick aus der Nähe</translation>
    </message>
    <message>
        <source>• Drop several songs or a folder: Cmd+Page Up and Cmd+Page Down go through them.
• Zoomed in, the waveform shows the sound itself. Follow keeps the play head in view.
• The Loops menu saves the loops to a file and loads them again, on another computer too.</source>
        <translation>• Ziehen Sie mehrere Songs oder einen Ordner ins Fenster: Cmd+Bild auf und Cmd+Bild ab gehen sie durch.
• Vergrößert zeigt die Wellenform den Klang selbst. „Folgen“ hält die Abspielposition im Blick.
• Das Menü „Schleifen“ sichert die Schleifen in einer Datei und lädt sie wieder, auch auf einem anderen Rechner.</translation>
    </message>
    <message>
        <source>• [ and ] set the region&apos;s start and end where you hear it. With Shift that end moves 10 ms outwards, with Alt inwards.
• Comma and period move the region by its own length, Backspace takes the whole song.
• Save Loop (Cmd+S) keeps the region under a name, with speed, pitch and trainer.
• Click a saved loop, or press Cmd+1 to Cmd+0: it begins when the present pass has ended, with Alt at once.
• The trainer (Cmd+T) plays the loop at one speed after the other. A speed set by hand pauses it.
• Cmd+P plays the saved loops as a list.
• Cmd+Z undoes, Cmd+E exports what you hear.</source>
        <translation>• [ und ] (die Tasten rechts vom P) setzen Anfang und Ende des Bereichs, wo es zu hören ist. Mit Umschalt rückt dieses Ende 10 ms nach außen, mit Alt nach innen.
• Komma und Punkt verschieben den Bereich um seine Länge, die Rücktaste nimmt den ganzen Song.
• Schleife sichern (Cmd+S) behält den Bereich unter einem Namen, mit Tempo, Tonhöhe und Trainer.
• Ein Klick auf eine gesicherte Schleife, oder Cmd+1 bis Cmd+0: sie beginnt, wenn der jetzige Durchgang zu Ende ist, mit Alt sofort.
• Der Trainer (Cmd+T) spielt die Schleife mit einem Tempo nach dem anderen. Ein Tempo von Hand lässt ihn pausieren.
• Cmd+P spielt die gesicherten Schleifen als Liste.
• Cmd+Z nimmt zurück, Cmd+E exportiert, was zu hören ist.</translation>
    </message>
</context>
<context>
    <name>quillet::HintNotice</name>
    <message>
        <source>Got It</source>
        <translation>Verstanden</translation>
    </message>
    <message>
        <source>Drag over the waveform to choose a bar, then press %1.</source>
        <translation>Ziehen Sie über die Wellenform, um einen Takt zu wählen, und drücken Sie dann %1.</translation>
    </message>
    <message>
        <source>Click the speed and type one such as 60, or press %1 and %2.</source>
        <translation>Klicken Sie auf das Tempo und geben Sie etwa 60 ein, oder drücken Sie %1 und %2.</translation>
    </message>
    <message>
        <source>%1 and %2 mark a region while you listen.</source>
        <translation>%1 und %2 markieren beim Hören einen Bereich.</translation>
    </message>
</context>
<context>
    <name>quillet::HoldButton</name>
    <message>
        <source>Hold</source>
        <translation>Halten</translation>
    </message>
    <message>
        <source>Exit Hold mode [H]</source>
        <translation>Halten beenden [H]</translation>
    </message>
    <message>
        <source>Hold — freeze on a short section [H]</source>
        <translation>Halten – ein kurzes Stück steht still [H]</translation>
    </message>
</context>
<context>
    <name>quillet::KeyResponderView</name>
    <message>
        <source>Player</source>
        <translation>Player</translation>
    </message>
</context>
<context>
    <name>quillet::KeySettings</name>
    <message>
        <source>Mute %1</source>
        <translation>%1 stumm</translation>
    </message>
    <message>
        <source>Hear %1 Alone</source>
        <translation>Nur %1</translation>
    </message>
    <message>
        <source>Loop %1</source>
        <translation>Schleife %1</translation>
    </message>
    <message>
        <source>Loop %1 at Once</source>
        <translation>Schleife %1 sofort</translation>
    </message>
    <message>
        <source>Play / Pause</source>
        <translation>Wiedergabe / Pause</translation>
    </message>
    <message>
        <source>Reset All Keys</source>
        <translation>Alle Tasten zurücksetzen</translation>
    </message>
    <message>
        <source>Click a key and press the new one; Escape leaves it as it is. A pedal that sends keys works too. Space always plays and pauses.</source>
        <translation>Auf eine Taste klicken und die neue drücken; Escape lässt sie, wie sie ist. Ein Pedal, das Tasten sendet, geht auch. Die Leertaste spielt und pausiert immer.</translation>
    </message>
    <message>
        <source>Reset</source>
        <translation>Zurücksetzen</translation>
    </message>
    <message>
        <source>Reset the key of %1</source>
        <translation>Die Taste von %1 zurücksetzen</translation>
    </message>
    <message>
        <source>None</source>
        <translation>Keine</translation>
    </message>
    <message>
        <source>Press a key…</source>
        <translation>Taste drücken …</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <comment>A command and its key</comment>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>also: %1</source>
        <translation>auch: %1</translation>
    </message>
</context>
<context>
    <name>quillet::LanguageSettings</name>
    <message>
        <source>Something is still under way: it changes when Quillet is started again.</source>
        <translation>Noch ist etwas im Gange: Gilt ab dem nächsten Start von Quillet.</translation>
    </message>
    <message>
        <source>As the desktop</source>
        <translation>Wie der Desktop</translation>
    </message>
    <message>
        <source>Language</source>
        <translation>Sprache</translation>
    </message>
</context>
<context>
    <name>quillet::LevelNotice</name>
    <message>
        <source>Dismiss</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>The numbers in this file are far above full scale. It is played as what they were meant to be.</source>
        <translation>Die Zahlen in dieser Datei liegen weit über der Aussteuerungsgrenze. Sie wird so gespielt, wie sie gemeint waren.</translation>
    </message>
    <message>
        <source>This file is so quiet that nothing will be heard of it. Raise its level with an audio editor.</source>
        <translation>Diese Datei ist so leise, dass nichts von ihr zu hören sein wird. Heben Sie ihren Pegel mit einem Audio-Editor an.</translation>
    </message>
</context>
<context>
    <name>quillet::LoadingScreen</name>
    <message>
        <source>Progress</source>
        <translation>Fortschritt</translation>
    </message>
</context>
<context>
    <name>quillet::LoopControl</name>
    <message>
        <source>Loop</source>
        <translation>Schleife</translation>
    </message>
    <message>
        <source>sec</source>
        <translation>s</translation>
    </message>
    <message>
        <source>Loop delay, seconds</source>
        <translation>Pause der Schleife, Sekunden</translation>
    </message>
    <message>
        <source>ms</source>
        <translation>ms</translation>
    </message>
    <message>
        <source>Loop delay, milliseconds</source>
        <translation>Pause der Schleife, Millisekunden</translation>
    </message>
    <message>
        <source>Delay:</source>
        <translation>Pause:</translation>
    </message>
</context>
<context>
    <name>quillet::LoopFileFlow</name>
    <message>
        <source>“%1” cannot be read: %2.</source>
        <translation>„%1“ lässt sich nicht lesen: %2.</translation>
    </message>
    <message>
        <source>“%1” was written by a newer version of Quillet. Update Quillet to read it.</source>
        <translation>„%1“ wurde von einer neueren Version von Quillet geschrieben. Aktualisieren Sie Quillet, um es zu lesen.</translation>
    </message>
    <message>
        <source>“%1” holds no loops.</source>
        <translation>„%1“ enthält keine Schleifen.</translation>
    </message>
    <message>
        <source>Save Loops to a File</source>
        <translation>Schleifen in Datei sichern</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Sichern</translation>
    </message>
    <message>
        <source>“%1” has been written.</source>
        <translation>„%1“ ist geschrieben.</translation>
    </message>
    <message>
        <source>Load Loops from a File</source>
        <translation>Schleifen aus Datei laden</translation>
    </message>
    <message>
        <source>Files of loops</source>
        <translation>Dateien mit Schleifen</translation>
    </message>
    <message>
        <source>“%1” holds the loops of another song.</source>
        <translation>„%1“ enthält die Schleifen eines anderen Songs.</translation>
    </message>
    <message>
        <source>“%1” holds the loops of another song: “%2”.</source>
        <translation>„%1“ enthält die Schleifen eines anderen Songs: „%2“.</translation>
    </message>
    <message>
        <source>They may lie elsewhere in this one.</source>
        <translation>In diesem können sie an anderen Stellen liegen.</translation>
    </message>
    <message>
        <source>Add Them Anyway</source>
        <translation>Trotzdem hinzufügen</translation>
    </message>
    <message>
        <source>Loops added: %1.</source>
        <translation>Hinzugefügte Schleifen: %1.</translation>
    </message>
    <message>
        <source>There already: %1.</source>
        <translation>Schon vorhanden: %1.</translation>
    </message>
    <message>
        <source>Beyond the song’s end: %1.</source>
        <translation>Hinter dem Ende des Songs: %1.</translation>
    </message>
    <message>
        <source>More than a song can have: %1.</source>
        <translation>Mehr, als ein Song haben kann: %1.</translation>
    </message>
</context>
<context>
    <name>quillet::LoopListModel</name>
    <message>
        <source>%1 – %2, %3%</source>
        <translation>%1 – %2, %3 %</translation>
    </message>
    <message>
        <source>with trainer</source>
        <translation>mit Trainer</translation>
    </message>
    <message>
        <source>%1, %2</source>
        <comment>A loop&apos;s name, and what it is</comment>
        <translation>%1, %2</translation>
    </message>
</context>
<context>
    <name>quillet::LoopStrip</name>
    <message>
        <source>Name of the loop</source>
        <translation>Name der Schleife</translation>
    </message>
    <message>
        <source>Play List</source>
        <translation>Liste spielen</translation>
    </message>
    <message>
        <source>Saved loops</source>
        <translation>Gesicherte Schleifen</translation>
    </message>
    <message>
        <source>Play the loops one after the other, each as often as its menu says</source>
        <translation>Spielt die Schleifen nacheinander, jede so oft, wie ihr Menü sagt</translation>
    </message>
    <message>
        <source>Rename</source>
        <translation>Umbenennen</translation>
    </message>
    <message>
        <source>Color</source>
        <translation>Farbe</translation>
    </message>
    <message>
        <source>Times in the List</source>
        <translation>Wie oft in der Liste</translation>
    </message>
    <message>
        <source>Replace by the Present Region</source>
        <translation>Durch den jetzigen Bereich ersetzen</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Purple</source>
        <translation>Violett</translation>
    </message>
    <message>
        <source>Orange</source>
        <translation>Orange</translation>
    </message>
    <message>
        <source>Green</source>
        <translation>Grün</translation>
    </message>
    <message>
        <source>Blue</source>
        <translation>Blau</translation>
    </message>
    <message>
        <source>Pink</source>
        <translation>Rosa</translation>
    </message>
    <message>
        <source>Yellow</source>
        <translation>Gelb</translation>
    </message>
    <message>
        <source>Teal</source>
        <translation>Petrol</translation>
    </message>
    <message>
        <source>Gray</source>
        <translation>Grau</translation>
    </message>
</context>
<context>
    <name>quillet::MainWindow</name>
    <message>
        <source>Open Recent</source>
        <translation>Zuletzt geöffnet</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <source>%1 – %2</source>
        <translation>%1 – %2</translation>
    </message>
    <message>
        <source>%1 — Quillet</source>
        <translation>%1 — Quillet</translation>
    </message>
    <message>
        <source>Region</source>
        <translation>Bereich</translation>
    </message>
    <message>
        <source>Speed</source>
        <translation>Tempo</translation>
    </message>
    <message>
        <source>Pitch</source>
        <translation>Tonhöhe</translation>
    </message>
    <message>
        <source>Equalizer</source>
        <translation>Equalizer</translation>
    </message>
    <message>
        <source>Channels</source>
        <translation>Kanäle</translation>
    </message>
    <message>
        <source>Trainer</source>
        <translation>Trainer</translation>
    </message>
    <message>
        <source>Loops</source>
        <translation>Schleifen</translation>
    </message>
    <message>
        <source>Stem Mix</source>
        <translation>Mischung der Spuren</translation>
    </message>
    <message>
        <source>%1 %2</source>
        <comment>Undo, or Redo, and what</comment>
        <translation>%1: %2</translation>
    </message>
</context>
<context>
    <name>quillet::Notice</name>
    <message>
        <source>Progress</source>
        <translation>Fortschritt</translation>
    </message>
</context>
<context>
    <name>quillet::OfferNotice</name>
    <message>
        <source>You have practised this song before.</source>
        <translation>Dieses Stück haben Sie schon geübt.</translation>
    </message>
    <message>
        <source>Restore its settings</source>
        <translation>Einstellungen wiederherstellen</translation>
    </message>
    <message>
        <source>Dismiss</source>
        <translation>Schließen</translation>
    </message>
</context>
<context>
    <name>quillet::OpenFromURLSheet</name>
    <message>
        <source>Download &amp;&amp; Open</source>
        <translation>Laden und öffnen</translation>
    </message>
    <message>
        <source>Open from URL</source>
        <translation>Aus dem Netz öffnen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>https://example.com/song.mp3</source>
        <translation>https://example.com/lied.mp3</translation>
    </message>
    <message>
        <source>Web address</source>
        <translation>Web-Adresse</translation>
    </message>
    <message>
        <source>Select</source>
        <translation>Wählen</translation>
    </message>
    <message>
        <source>Select the download folder</source>
        <translation>Download-Ordner wählen</translation>
    </message>
    <message>
        <source>Download folder</source>
        <translation>Download-Ordner</translation>
    </message>
    <message>
        <source>Progress</source>
        <translation>Fortschritt</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Anhalten</translation>
    </message>
    <message>
        <source>Download folder %1</source>
        <translation>Download-Ordner %1</translation>
    </message>
    <message>
        <source>Update yt-dlp</source>
        <translation>yt-dlp aktualisieren</translation>
    </message>
    <message>
        <source>Fetches the newest yt-dlp: sites change, and an old one cannot read them any more</source>
        <translation>Lädt das neueste yt-dlp: Seiten ändern sich, und ein altes kann sie nicht mehr lesen</translation>
    </message>
    <message>
        <source>yt-dlp is now %1. Try again.</source>
        <translation>yt-dlp ist jetzt %1. Versuchen Sie es noch einmal.</translation>
    </message>
    <message>
        <source>There is no newer yt-dlp. The site may have changed today, or need an account.</source>
        <translation>Es gibt kein neueres yt-dlp. Die Seite hat sich vielleicht heute geändert oder verlangt ein Konto.</translation>
    </message>
    <message>
        <source>The newest yt-dlp is being fetched…</source>
        <translation>Das neueste yt-dlp wird geladen …</translation>
    </message>
</context>
<context>
    <name>quillet::PitchControl</name>
    <message>
        <source>Pitch</source>
        <translation>Tonhöhe</translation>
    </message>
    <message>
        <source>Pitch in cents</source>
        <translation>Tonhöhe in Cent</translation>
    </message>
    <message>
        <source>Pitch down 1 cent</source>
        <translation>1 Cent tiefer</translation>
    </message>
    <message>
        <source>Pitch up 1 cent</source>
        <translation>1 Cent höher</translation>
    </message>
    <message>
        <source>Reset pitch</source>
        <translation>Tonhöhe zurücksetzen</translation>
    </message>
    <message>
        <source>cents  (±1200, 100 = 1 semitone)</source>
        <translation>Cent  (±1200, 100 = 1 Halbton)</translation>
    </message>
    <message>
        <source>Cents, semitones (“+2 st”), or what the song’s A is tuned to (“A=443”)</source>
        <translation>Cent, Halbtöne („+2 st“) oder worauf das A des Songs gestimmt ist („A=443“)</translation>
    </message>
</context>
<context>
    <name>quillet::PlayButton</name>
    <message>
        <source>Pause</source>
        <translation>Pause</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Spielen</translation>
    </message>
</context>
<context>
    <name>quillet::RegionControls</name>
    <message>
        <source>Start</source>
        <translation>Anfang</translation>
    </message>
    <message>
        <source>End</source>
        <translation>Ende</translation>
    </message>
    <message>
        <source>Region start, %1</source>
        <translation>Anfang des Bereichs, %1</translation>
    </message>
    <message>
        <source>Region end, %1</source>
        <translation>Ende des Bereichs, %1</translation>
    </message>
    <message>
        <source>min</source>
        <translation>min</translation>
    </message>
    <message>
        <source>minutes</source>
        <translation>Minuten</translation>
    </message>
    <message>
        <source>sec</source>
        <translation>s</translation>
    </message>
    <message>
        <source>seconds</source>
        <translation>Sekunden</translation>
    </message>
    <message>
        <source>ms</source>
        <translation>ms</translation>
    </message>
    <message>
        <source>milliseconds</source>
        <translation>Millisekunden</translation>
    </message>
</context>
<context>
    <name>quillet::RegionHandle</name>
    <message>
        <source>%1 seconds</source>
        <translation>%1 Sekunden</translation>
    </message>
    <message>
        <source>1 minute %1</source>
        <translation>1 Minute %1</translation>
    </message>
    <message>
        <source>%1 minutes %2</source>
        <translation>%1 Minuten %2</translation>
    </message>
    <message>
        <source>Region start</source>
        <translation>Anfang des Bereichs</translation>
    </message>
    <message>
        <source>Region end</source>
        <translation>Ende des Bereichs</translation>
    </message>
    <message>
        <source>Arrow keys move it by a hundredth of a second, with Shift by a second</source>
        <translation>Die Pfeiltasten bewegen es um eine Hundertstelsekunde, mit Umschalt um eine Sekunde</translation>
    </message>
</context>
<context>
    <name>quillet::SearchNotice</name>
    <message>
        <source>Looking for songs…</source>
        <translation>Songs werden gesucht…</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Anhalten</translation>
    </message>
</context>
<context>
    <name>quillet::SeparationNotice</name>
    <message>
        <source>Show</source>
        <translation>Zeigen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Use the Stems</source>
        <translation>Spuren verwenden</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Show the separation</source>
        <translation>Trennung zeigen</translation>
    </message>
    <message>
        <source>Cancel the separation</source>
        <translation>Trennung abbrechen</translation>
    </message>
    <message>
        <source>Setting up stem separation…</source>
        <translation>Die Spurentrennung wird eingerichtet …</translation>
    </message>
    <message>
        <source>Separating “%1”: %2%</source>
        <translation>„%1“ wird getrennt: %2 %</translation>
    </message>
    <message>
        <source>Cancelling…</source>
        <translation>Wird abgebrochen …</translation>
    </message>
    <message>
        <source>The stems of “%1” are ready.</source>
        <translation>Die Spuren von „%1“ sind fertig.</translation>
    </message>
    <message>
        <source>The stems of “%1” are ready: they play when it is opened again.</source>
        <translation>Die Spuren von „%1“ sind fertig; sie spielen, wenn es wieder geöffnet wird.</translation>
    </message>
</context>
<context>
    <name>quillet::SettingsNotice</name>
    <message>
        <source>Your settings cannot be saved: another program has “%1” locked. They are saved once it lets go.</source>
        <translation>Die Einstellungen sind nicht zu speichern: Ein anderes Programm hat „%1“ gesperrt. Gespeichert werden sie, sobald es loslässt.</translation>
    </message>
    <message>
        <source>Your settings cannot be saved: there is no space left for “%1”. They are saved once there is.</source>
        <translation>Die Einstellungen sind nicht zu speichern: Für „%1“ ist kein Platz mehr. Gespeichert werden sie, sobald welcher da ist.</translation>
    </message>
    <message>
        <source>Your settings cannot be saved: “%1” may not be written. They are saved once it may.</source>
        <translation>Die Einstellungen sind nicht zu speichern: „%1“ darf nicht geschrieben werden. Gespeichert werden sie, sobald es erlaubt ist.</translation>
    </message>
    <message>
        <source>Your settings cannot be read or saved: “%1” cannot be opened. They are saved once it can.</source>
        <translation>Die Einstellungen sind nicht zu lesen und nicht zu speichern: „%1“ lässt sich nicht öffnen. Gespeichert werden sie, sobald das geht.</translation>
    </message>
    <message>
        <source>Your settings cannot be saved: writing “%1” fails. They are saved once that works.</source>
        <translation>Die Einstellungen sind nicht zu speichern: „%1“ zu schreiben misslingt. Gespeichert werden sie, sobald es gelingt.</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>The file of your settings was damaged. It was moved aside as “%1”, and a new one was begun.</source>
        <translation>Die Datei der Einstellungen war beschädigt. Sie liegt jetzt als „%1“ daneben, und eine neue ist begonnen.</translation>
    </message>
</context>
<context>
    <name>quillet::SettingsWindow</name>
    <message>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
</context>
<context>
    <name>quillet::SongListModel</name>
    <message>
        <source>%1, cannot be opened</source>
        <comment>A song</comment>
        <translation>%1, lässt sich nicht öffnen</translation>
    </message>
    <message>
        <source>%1, the present song</source>
        <comment>A song</comment>
        <translation>%1, der jetzige Song</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <comment>The number of a song in a list</comment>
        <translation>%1 von %2</translation>
    </message>
    <message>
        <source>%1 songs</source>
        <translation>%1 Songs</translation>
    </message>
</context>
<context>
    <name>quillet::SongListView</name>
    <message>
        <source>Songs of the list</source>
        <translation>Songs der Liste</translation>
    </message>
</context>
<context>
    <name>quillet::SongStrip</name>
    <message>
        <source>Previous song</source>
        <translation>Voriger Song</translation>
    </message>
    <message>
        <source>Next song</source>
        <translation>Nächster Song</translation>
    </message>
    <message>
        <source>List of songs</source>
        <translation>Songliste</translation>
    </message>
    <message>
        <source>All songs of the list</source>
        <translation>Alle Songs der Liste</translation>
    </message>
    <message>
        <source>Close the list</source>
        <translation>Liste schließen</translation>
    </message>
    <message>
        <source>Songs, %1</source>
        <comment>The place in the list</comment>
        <translation>Songs, %1</translation>
    </message>
</context>
<context>
    <name>quillet::SpeedControl</name>
    <message>
        <source>1%</source>
        <translation>1 %</translation>
    </message>
    <message>
        <source>2%</source>
        <translation>2 %</translation>
    </message>
    <message>
        <source>5%</source>
        <translation>5 %</translation>
    </message>
    <message>
        <source>10%</source>
        <translation>10 %</translation>
    </message>
    <message>
        <source>25%</source>
        <translation>25 %</translation>
    </message>
    <message>
        <source>Custom</source>
        <translation>Eigene</translation>
    </message>
    <message>
        <source>Speed</source>
        <translation>Tempo</translation>
    </message>
    <message>
        <source>Speed in percent</source>
        <translation>Tempo in Prozent</translation>
    </message>
    <message>
        <source>Decrease speed</source>
        <translation>Langsamer</translation>
    </message>
    <message>
        <source>Increase speed</source>
        <translation>Schneller</translation>
    </message>
    <message>
        <source>Reset speed</source>
        <translation>Tempo zurücksetzen</translation>
    </message>
    <message>
        <source>Custom speed step in percent</source>
        <translation>Eigene Schrittweite in Prozent</translation>
    </message>
    <message>
        <source>Step:</source>
        <translation>Schritt:</translation>
    </message>
    <message>
        <source>Speed step %1</source>
        <translation>Schrittweite %1</translation>
    </message>
</context>
<context>
    <name>quillet::StemControlsView</name>
    <message>
        <source>Stems</source>
        <translation>Spuren</translation>
    </message>
    <message>
        <source>%1 volume</source>
        <translation>Lautstärke: %1</translation>
    </message>
    <message>
        <source>Solo</source>
        <translation>Solo</translation>
    </message>
    <message>
        <source>Solo %1</source>
        <translation>Solo: %1</translation>
    </message>
    <message>
        <source>Unmute</source>
        <translation>Laut</translation>
    </message>
    <message>
        <source>Mute</source>
        <translation>Stumm</translation>
    </message>
    <message>
        <source>Unmute %1</source>
        <translation>%1 wieder laut</translation>
    </message>
    <message>
        <source>Mute %1</source>
        <translation>%1 stumm</translation>
    </message>
    <message>
        <source>Hear the others again</source>
        <translation>Die anderen wieder hören</translation>
    </message>
    <message>
        <source>Hear %1 alone</source>
        <translation>Nur %1 hören</translation>
    </message>
</context>
<context>
    <name>quillet::StemSeparationFlow</name>
    <message>
        <source>Delete separated stem files for this track?</source>
        <translation>Die getrennten Spuren dieses Stücks löschen?</translation>
    </message>
    <message>
        <source>They can be recreated by running separation again.</source>
        <translation>Sie lassen sich durch eine neue Trennung wiederherstellen.</translation>
    </message>
    <message>
        <source>Delete Stems</source>
        <translation>Spuren löschen</translation>
    </message>
    <message>
        <source>Export Stems</source>
        <translation>Spuren exportieren</translation>
    </message>
    <message>
        <source>What would you like to export?</source>
        <translation>Was soll exportiert werden?</translation>
    </message>
    <message>
        <source>The stems are copied as they are. The mix is one file in which each stem is as loud as you hear it now, at the song’s own speed and pitch.</source>
        <translation>Die Spuren werden kopiert, wie sie sind. Die Mischung ist eine Datei, in der jede Spur so laut ist, wie sie jetzt klingt, in Tempo und Tonhöhe des Stücks.</translation>
    </message>
    <message>
        <source>Stems…</source>
        <translation>Spuren …</translation>
    </message>
    <message>
        <source>Mix…</source>
        <translation>Mischung …</translation>
    </message>
    <message>
        <source>Export</source>
        <translation>Exportieren</translation>
    </message>
    <message>
        <source>Copying the stems…</source>
        <translation>Die Spuren werden kopiert …</translation>
    </message>
    <message>
        <source>The stems are in “%1”.</source>
        <translation>Die Spuren liegen in „%1“.</translation>
    </message>
</context>
<context>
    <name>quillet::StemSeparationSheet</name>
    <message>
        <source>Stem separation splits the loaded track into six individual parts — Vocals, Drums, Bass, Guitar, Piano, and Other — so you can mute or remove any combination while you practice.</source>
        <translation>Die Spurentrennung zerlegt das Stück in sechs einzelne Spuren – Gesang, Schlagzeug, Bass, Gitarre, Klavier und alles andere –, von denen beim Üben jede stumm bleiben kann.</translation>
    </message>
    <message>
        <source>The file has changed since its stems were made. Separate it again to have stems of what it is now.</source>
        <translation>Die Datei wurde verändert, seit ihre Spuren entstanden. Trennen Sie sie noch einmal, um Spuren des heutigen Stands zu haben.</translation>
    </message>
    <message>
        <source>The first separation requires a one-time setup that may take several minutes. Subsequent runs will be faster.</source>
        <translation>Die erste Trennung braucht eine einmalige Einrichtung, die einige Minuten dauern kann. Danach geht es schneller.</translation>
    </message>
    <message>
        <source>Continue in Background</source>
        <translation>Im Hintergrund weiter</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Separate Stems</source>
        <translation>Spuren trennen</translation>
    </message>
    <message>
        <source>Progress</source>
        <translation>Fortschritt</translation>
    </message>
    <message>
        <source>Try Again</source>
        <translation>Noch einmal</translation>
    </message>
    <message>
        <source>Separate</source>
        <translation>Trennen</translation>
    </message>
    <message>
        <source>%1%</source>
        <translation>%1 %</translation>
    </message>
    <message>
        <source>Cancelling…</source>
        <translation>Wird abgebrochen …</translation>
    </message>
    <message>
        <source>It fetches a model that is not part of Quillet, and whose licence is unclear: whether it covers what you do with it is for you to judge.</source>
        <translation>Dabei wird ein Modell geladen, das nicht zu Quillet gehört und dessen Lizenz unklar ist: Ob sie deckt, was Sie damit tun, müssen Sie selbst beurteilen.</translation>
    </message>
</context>
<context>
    <name>quillet::StemSeparator</name>
    <message>
        <source>Creating Python environment…</source>
        <translation>Die Python-Umgebung wird angelegt …</translation>
    </message>
    <message>
        <source>Installing dependencies (this may take several minutes on first use)…</source>
        <translation>Die Abhängigkeiten werden installiert (beim ersten Mal kann das einige Minuten dauern) …</translation>
    </message>
</context>
<context>
    <name>quillet::StemSettings</name>
    <message>
        <source>Stems folder</source>
        <translation>Spuren-Ordner</translation>
    </message>
    <message>
        <source>Dependencies folder</source>
        <translation>Ordner der Abhängigkeiten</translation>
    </message>
    <message>
        <source>Delete Stems</source>
        <translation>Spuren löschen</translation>
    </message>
    <message>
        <source>Remove Dependencies</source>
        <translation>Abhängigkeiten entfernen</translation>
    </message>
    <message>
        <source>Stems on disk</source>
        <translation>Spuren auf der Platte</translation>
    </message>
    <message>
        <source>Dependencies</source>
        <translation>Abhängigkeiten</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>Nothing can be written to “%1”. Choose another folder.</source>
        <translation>In „%1“ lässt sich nichts schreiben. Wählen Sie einen anderen Ordner.</translation>
    </message>
    <message>
        <source>“%1” holds other files. Use it all the same?</source>
        <translation>„%1“ enthält andere Dateien. Trotzdem verwenden?</translation>
    </message>
    <message>
        <source>Stems are kept beside them. Quillet touches nothing that it has not made.</source>
        <translation>Die Spuren liegen dann daneben. Quillet rührt nichts an, was es nicht selbst gemacht hat.</translation>
    </message>
    <message>
        <source>The environment is kept in a folder of its own there, “%1”. Quillet touches nothing that it has not made.</source>
        <translation>Die Umgebung bekommt darin einen eigenen Ordner, „%1“. Quillet rührt nichts an, was es nicht selbst gemacht hat.</translation>
    </message>
    <message>
        <source>Use Folder</source>
        <translation>Ordner verwenden</translation>
    </message>
    <message>
        <source>None</source>
        <translation>Keine</translation>
    </message>
    <message>
        <source>Not installed</source>
        <translation>Nicht installiert</translation>
    </message>
    <message>
        <source>A song is being separated.</source>
        <translation>Gerade wird ein Stück getrennt.</translation>
    </message>
    <message>
        <source>Delete %1 of separated stem files?</source>
        <translation>%1 getrennter Spuren löschen?</translation>
    </message>
    <message>
        <source>They can be recreated by running separation again.</source>
        <translation>Sie lassen sich durch eine neue Trennung wiederherstellen.</translation>
    </message>
    <message>
        <source>Deleting…</source>
        <translation>Wird gelöscht …</translation>
    </message>
    <message>
        <source>Remove %1 of stem separation dependencies?</source>
        <translation>%1 an Abhängigkeiten der Spurentrennung entfernen?</translation>
    </message>
    <message>
        <source>Stem separation requires these dependencies to split audio into individual stems. You can remove them to free up space — they will be re-downloaded the next time you separate stems.</source>
        <translation>Die Spurentrennung braucht diese Abhängigkeiten, um Stücke in Spuren zu zerlegen. Sie lassen sich entfernen, um Platz zu schaffen – bei der nächsten Trennung werden sie wieder geladen.</translation>
    </message>
    <message>
        <source>Removing…</source>
        <translation>Wird entfernt …</translation>
    </message>
</context>
<context>
    <name>quillet::TimePickerField</name>
    <message>
        <source>Increase %1</source>
        <translation>%1 erhöhen</translation>
    </message>
    <message>
        <source>Decrease %1</source>
        <translation>%1 verringern</translation>
    </message>
</context>
<context>
    <name>quillet::ToolBar</name>
    <message>
        <source>No Recent Files</source>
        <translation>Noch keine Dateien</translation>
    </message>
    <message>
        <source>Clear Recents</source>
        <translation>Liste leeren</translation>
    </message>
    <message>
        <source>Open File...</source>
        <translation>Datei öffnen …</translation>
    </message>
    <message>
        <source>Recent</source>
        <translation>Zuletzt</translation>
    </message>
    <message>
        <source>Recent files</source>
        <translation>Zuletzt geöffnete Dateien</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>Hilfe</translation>
    </message>
    <message>
        <source>Cleanup Stems</source>
        <translation>Spuren löschen</translation>
    </message>
    <message>
        <source>Separate Stems…</source>
        <translation>Spuren trennen …</translation>
    </message>
</context>
<context>
    <name>quillet::TrainerControl</name>
    <message>
        <source>Trainer</source>
        <translation>Trainer</translation>
    </message>
    <message>
        <source>Resume</source>
        <translation>Weiter</translation>
    </message>
    <message>
        <source>At the goal</source>
        <translation>Am Ziel</translation>
    </message>
    <message>
        <source>Play the loop at one speed after the other</source>
        <translation>Spielt die Schleife mit einem Tempo nach dem anderen</translation>
    </message>
    <message>
        <source>From</source>
        <comment>a speed</comment>
        <translation>Von</translation>
    </message>
    <message>
        <source>Trainer, first speed in percent</source>
        <translation>Trainer, erstes Tempo in Prozent</translation>
    </message>
    <message>
        <source>to</source>
        <comment>a speed</comment>
        <translation>bis</translation>
    </message>
    <message>
        <source>Trainer, goal in percent</source>
        <translation>Trainer, Ziel in Prozent</translation>
    </message>
    <message>
        <source>by</source>
        <comment>steps of</comment>
        <translation>um</translation>
    </message>
    <message>
        <source>Trainer, step in percent</source>
        <translation>Trainer, Schritt in Prozent</translation>
    </message>
    <message>
        <source>every</source>
        <comment>so many passes</comment>
        <translation>alle</translation>
    </message>
    <message>
        <source>Trainer, passes at each speed</source>
        <translation>Trainer, Durchgänge bei jedem Tempo</translation>
    </message>
    <message>
        <source>passes, then</source>
        <comment>stay, stop or start over</comment>
        <translation>Durchgänge, dann</translation>
    </message>
    <message>
        <source>Stay</source>
        <translation>Bleiben</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Anhalten</translation>
    </message>
    <message>
        <source>Start Over</source>
        <translation>Von vorn</translation>
    </message>
    <message>
        <source>Paused</source>
        <translation>Pausiert</translation>
    </message>
    <message>
        <source>Goal reached: %1</source>
        <translation>Ziel erreicht: %1</translation>
    </message>
    <message>
        <source>Pass %1 of %2 at %3</source>
        <translation>Durchgang %1 von %2, %3</translation>
    </message>
</context>
<context>
    <name>quillet::TransportView</name>
    <message>
        <source>Position %1</source>
        <translation>Position %1</translation>
    </message>
    <message>
        <source>Position</source>
        <translation>Position</translation>
    </message>
</context>
<context>
    <name>quillet::UpdateFlow</name>
    <message>
        <source>Quillet %1 is available.</source>
        <translation>Quillet %1 ist erschienen.</translation>
    </message>
    <message>
        <source>Download Page</source>
        <translation>Zur Download-Seite</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Check for Updates</source>
        <translation>Nach Updates suchen</translation>
    </message>
    <message>
        <source>Checking for updates…</source>
        <translation>Nach Updates wird gesucht …</translation>
    </message>
    <message>
        <source>Quillet %1 is the newest version.</source>
        <translation>Quillet %1 ist die neueste Version.</translation>
    </message>
    <message>
        <source>Quillet %1 is available. You have %2.</source>
        <translation>Quillet %1 ist erschienen. Sie haben %2.</translation>
    </message>
</context>
<context>
    <name>quillet::UpdateSettings</name>
    <message>
        <source>Check for Updates…</source>
        <translation>Nach Updates suchen …</translation>
    </message>
    <message>
        <source>Quillet v%1</source>
        <translation>Quillet v%1</translation>
    </message>
    <message>
        <source>Update feed</source>
        <translation>Update-Feed</translation>
    </message>
</context>
<context>
    <name>quillet::ValueRow</name>
    <message>
        <source>Reset</source>
        <translation>Zurück</translation>
    </message>
</context>
<context>
    <name>quillet::VerticalSlider</name>
    <message>
        <source>%1 dB</source>
        <translation>%1 dB</translation>
    </message>
</context>
<context>
    <name>quillet::WaveformPanel</name>
    <message>
        <source>Zoom out</source>
        <translation>Verkleinern</translation>
    </message>
    <message>
        <source>Zoom in</source>
        <translation>Vergrößern</translation>
    </message>
    <message>
        <source>Pan left</source>
        <translation>Nach links</translation>
    </message>
    <message>
        <source>Pan right</source>
        <translation>Nach rechts</translation>
    </message>
    <message>
        <source>Fit Track</source>
        <translation>Ganzes Stück</translation>
    </message>
    <message>
        <source>Fit Region</source>
        <translation>Bereich</translation>
    </message>
    <message>
        <source>Zoom %1 times</source>
        <translation>Zoom %1-fach</translation>
    </message>
    <message>
        <source>Save Loop</source>
        <translation>Merken</translation>
    </message>
    <message>
        <source>Keep the region under a name, with its speed and pitch</source>
        <translation>Den Bereich unter einem Namen behalten, mit Tempo und Tonhöhe</translation>
    </message>
    <message>
        <source>Follow</source>
        <translation>Folgen</translation>
    </message>
    <message>
        <source>Keep the play head in view while it plays</source>
        <translation>Hält die Abspielposition beim Spielen im Blick</translation>
    </message>
    <message>
        <source>Follow the play head</source>
        <translation>Der Abspielposition folgen</translation>
    </message>
</context>
<context>
    <name>quillet::WaveformView</name>
    <message>
        <source>Waveform</source>
        <translation>Wellenform</translation>
    </message>
</context>
</TS>
