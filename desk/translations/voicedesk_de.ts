<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de">
<context>
    <name>Banner</name>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Close the message</source>
        <translation>Meldung schließen</translation>
    </message>
</context>
<context>
    <name>CameraAbilities</name>
    <message>
        <source>What can it do?</source>
        <translation>Was kann sie?</translation>
    </message>
    <message>
        <source>The server asks the camera at this address, with this login. It takes up to ten seconds.</source>
        <translation>Der Server fragt die Kamera unter dieser Adresse, mit dieser Anmeldung. Das dauert bis zu zehn Sekunden.</translation>
    </message>
    <message>
        <source>What the camera can do</source>
        <translation>Was die Kamera kann</translation>
    </message>
</context>
<context>
    <name>CameraAnswers</name>
    <message>
        <source>yes</source>
        <translation>ja</translation>
    </message>
    <message>
        <source>yes, in %1</source>
        <translation>ja, in %1</translation>
    </message>
    <message>
        <source>no</source>
        <translation>nein</translation>
    </message>
    <message>
        <source>not known</source>
        <translation>nicht bekannt</translation>
    </message>
    <message>
        <source>A camera</source>
        <translation>Eine Kamera</translation>
    </message>
    <message>
        <source>Not all could be asked: %1</source>
        <translation>Nicht alles war zu erfragen: %1</translation>
    </message>
    <message>
        <source>The camera could not be asked: %1</source>
        <translation>Die Kamera war nicht zu befragen: %1</translation>
    </message>
    <message>
        <source>Plays what is said: %1</source>
        <translation>Spielt, was gesagt wird: %1</translation>
    </message>
    <message>
        <source>Can be heard: %1</source>
        <translation>Ist zu hören: %1</translation>
    </message>
    <message>
        <source>Make, model, firmware: %1</source>
        <translation>Marke, Modell, Firmware: %1</translation>
    </message>
    <message>
        <source>Stream &quot;%1&quot;: %2</source>
        <translation>Stream „%1“: %2</translation>
    </message>
</context>
<context>
    <name>CameraDialog</name>
    <message>
        <source>Add a camera</source>
        <translation>Kamera anlegen</translation>
    </message>
    <message>
        <source>Camera &quot;%1&quot;</source>
        <translation>Kamera „%1“</translation>
    </message>
    <message>
        <source>Network camera (ONVIF, RTSP)</source>
        <translation>Netzwerkkamera (ONVIF, RTSP)</translation>
    </message>
    <message>
        <source>Simulated camera</source>
        <translation>Simulierte Kamera</translation>
    </message>
    <message>
        <source>An advanced setting is not right.</source>
        <translation>Eine erweiterte Einstellung stimmt nicht.</translation>
    </message>
    <message>
        <source>A name and an address are needed.</source>
        <translation>Name und Adresse sind nötig.</translation>
    </message>
    <message>
        <source>The name is not right.</source>
        <translation>Der Name stimmt nicht.</translation>
    </message>
    <message>
        <source>The address is not right.</source>
        <translation>Die Adresse stimmt nicht.</translation>
    </message>
    <message>
        <source>User name or password are not right.</source>
        <translation>Benutzername oder Kennwort stimmen nicht.</translation>
    </message>
    <message>
        <source>Camera</source>
        <translation>Kamera</translation>
    </message>
    <message>
        <source>Advanced</source>
        <translation>Erweitert</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Give the camera a name.</source>
        <translation>Die Kamera braucht einen Namen.</translation>
    </message>
    <message>
        <source>At most %1 characters.</source>
        <translation>Höchstens %1 Zeichen.</translation>
    </message>
    <message>
        <source>Kind</source>
        <translation>Art</translation>
    </message>
    <message>
        <source>Address</source>
        <translation>Adresse</translation>
    </message>
    <message>
        <source>An IP address or a host name, also with a port like host:8080; a whole address with http:// or https://; or that of its stream with rtsp:// or rtsps://.</source>
        <translation>Eine IP-Adresse oder ein Rechnername, auch mit Port wie host:8080; eine ganze Adresse mit http:// oder https://; oder die ihres Streams mit rtsp:// oder rtsps://.</translation>
    </message>
    <message>
        <source>10.0.0.5 or rtsp://10.0.0.5:554/path</source>
        <translation>10.0.0.5 oder rtsp://10.0.0.5:554/path</translation>
    </message>
    <message>
        <source>User name</source>
        <translation>Benutzername</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Passwort</translation>
    </message>
    <message>
        <source>empty: as before</source>
        <translation>leer: wie bisher</translation>
    </message>
    <message>
        <source>A password needs a user name.</source>
        <translation>Zu einem Passwort gehört ein Benutzername.</translation>
    </message>
    <message>
        <source>The server logs in at the camera with them; most cameras want a login.</source>
        <translation>Damit meldet sich der Server bei der Kamera an; die meisten Kameras verlangen es.</translation>
    </message>
    <message>
        <source>The password is not shown. Without a user name the camera loses both.</source>
        <translation>Das Passwort wird nicht gezeigt. Ohne Benutzernamen verliert die Kamera beides.</translation>
    </message>
    <message>
        <source>Abilities</source>
        <translation>Fähigkeiten</translation>
    </message>
</context>
<context>
    <name>CameraPicture</name>
    <message>
        <source>Picture of %1</source>
        <translation>Bild von %1</translation>
    </message>
    <message>
        <source>Choose a camera to see its picture.</source>
        <translation>Kamera wählen, um ihr Bild zu sehen.</translation>
    </message>
    <message>
        <source>No picture: %1.</source>
        <translation>Kein Bild: %1.</translation>
    </message>
    <message>
        <source>Waiting for the picture…</source>
        <translation>Warten auf das Bild…</translation>
    </message>
    <message>
        <source>Old picture: %1.</source>
        <translation>Altes Bild: %1.</translation>
    </message>
    <message>
        <source>Old picture</source>
        <translation>Altes Bild</translation>
    </message>
    <message>
        <source>Live video</source>
        <translation>Live-Video</translation>
    </message>
    <message>
        <source>No live video: %1.</source>
        <translation>Kein Live-Video: %1.</translation>
    </message>
    <message>
        <source>Live</source>
        <translation>Live</translation>
    </message>
    <message>
        <source>Stills</source>
        <translation>Einzelbilder</translation>
    </message>
</context>
<context>
    <name>CameraSettingsForm</name>
    <message>
        <source>In the connection (TCP)</source>
        <translation>In der Verbindung (TCP)</translation>
    </message>
    <message>
        <source>%1 ms</source>
        <translation>%1 ms</translation>
    </message>
    <message>
        <source>Codec to the camera</source>
        <translation>Codec zur Kamera</translation>
    </message>
    <message>
        <source>The first that the camera offers</source>
        <translation>Der erste, den die Kamera anbietet</translation>
    </message>
    <message>
        <source>0 to %1.</source>
        <translation>0 bis %1.</translation>
    </message>
    <message>
        <source>Give up after, ms</source>
        <translation>Aufgeben nach, ms</translation>
    </message>
    <message>
        <source>Wait after opening, ms</source>
        <translation>Warten nach dem Öffnen, ms</translation>
    </message>
    <message>
        <source>%1 to %2.</source>
        <translation>%1 bis %2.</translation>
    </message>
    <message>
        <source>Priority (DSCP)</source>
        <translation>Vorrang (DSCP)</translation>
    </message>
    <message>
        <source>Do not hear the camera while somebody talks (against echo)</source>
        <translation>Die Kamera nicht hören, während jemand spricht (gegen Echo)</translation>
    </message>
    <message>
        <source>Send packets at an even pace (against garbled sound)</source>
        <translation>Pakete gleichmäßig senden (gegen verzerrten Ton)</translation>
    </message>
    <message>
        <source>Send each packet at once (TCP_NODELAY)</source>
        <translation>Jedes Paket sofort senden (TCP_NODELAY)</translation>
    </message>
    <message>
        <source>Take any certificate (rtsps, https)</source>
        <translation>Jedes Zertifikat annehmen (rtsps, https)</translation>
    </message>
    <message>
        <source>How sound is sent</source>
        <translation>Weg des Tons</translation>
    </message>
    <message>
        <source>Packet length</source>
        <translation>Paketlänge</translation>
    </message>
    <message>
        <source>In packets of their own (UDP)</source>
        <translation>In eigenen Paketen (UDP)</translation>
    </message>
    <message>
        <source>Most cameras work with what is set. The wait is for a camera that swallows the first words.</source>
        <translation>Für die meisten Kameras stimmt, was eingestellt ist. Das Warten nach dem Öffnen hilft, wenn eine Kamera die ersten Worte verschluckt.</translation>
    </message>
    <message>
        <source>Several may talk to the camera at a time</source>
        <translation>Mehrere dürfen zugleich mit der Kamera sprechen</translation>
    </message>
</context>
<context>
    <name>CameraTest</name>
    <message>
        <source>The line does not open: %1</source>
        <translation>Die Leitung geht nicht auf: %1</translation>
    </message>
    <message>
        <source>The line opens, but the camera was lost during the test.</source>
        <translation>Die Leitung geht auf, aber die Kamera ging während des Tests verloren.</translation>
    </message>
    <message>
        <source>The line opens, and the tone comes back after %1 ms.</source>
        <translation>Die Leitung geht auf, und der Ton kommt nach %1 ms zurück.</translation>
    </message>
    <message>
        <source>The line opens. The camera is heard, but not the tone.</source>
        <translation>Die Leitung geht auf. Die Kamera ist zu hören, aber nicht der Ton.</translation>
    </message>
    <message>
        <source>The line opens. The camera is not heard while somebody talks, as its settings say, so nobody knows whether it played the tone.</source>
        <translation>Die Verbindung steht. Die Kamera ist nicht zu hören, während jemand spricht; so ist sie eingestellt. Ob sie den Ton gespielt hat, ist darum nicht bekannt.</translation>
    </message>
    <message>
        <source>The line opens. The camera sends no sound, so nobody knows whether it played the tone.</source>
        <translation>Die Leitung geht auf. Die Kamera sendet keinen Ton: Ob sie den Prüfton gespielt hat, weiß niemand.</translation>
    </message>
    <message>
        <source>The line does not open: no answer</source>
        <translation>Die Leitung geht nicht auf: keine Antwort</translation>
    </message>
</context>
<context>
    <name>CameraView</name>
    <message>
        <source>the server does not answer</source>
        <translation>der Server antwortet nicht</translation>
    </message>
    <message>
        <source>the server&apos;s answer is no picture of this camera</source>
        <translation>die Antwort des Servers ist kein Bild dieser Kamera</translation>
    </message>
    <message>
        <source>the picture cannot be decoded</source>
        <translation>das Bild ist nicht zu lesen</translation>
    </message>
</context>
<context>
    <name>CamerasPage</name>
    <message>
        <source>Search by name or address</source>
        <translation>Nach Name oder Adresse suchen</translation>
    </message>
    <message>
        <source>Add a camera…</source>
        <translation>Kamera anlegen…</translation>
    </message>
    <message>
        <source>Cameras</source>
        <translation>Kameras</translation>
    </message>
    <message>
        <source>Part of the server; it cannot be changed.</source>
        <translation>Teil des Servers; sie ist nicht zu ändern.</translation>
    </message>
    <message>
        <source>Online</source>
        <translation>Erreichbar</translation>
    </message>
    <message>
        <source>Offline</source>
        <translation>Nicht erreichbar</translation>
    </message>
    <message>
        <source>Delete the camera &quot;%1&quot;? This cannot be undone. A talk with it goes on.</source>
        <translation>Die Kamera „%1“ löschen? Das lässt sich nicht rückgängig machen. Ein Gespräch mit ihr geht weiter.</translation>
    </message>
    <message>
        <source>Nothing is found.</source>
        <translation>Nichts gefunden.</translation>
    </message>
    <message>
        <source>No cameras yet.</source>
        <translation>Noch keine Kameras.</translation>
    </message>
    <message>
        <source>No camera&apos;s name or address has this text in it.</source>
        <translation>Dieser Text ist in keinem Namen und keiner Adresse.</translation>
    </message>
    <message>
        <source>A camera needs a name and its address.</source>
        <translation>Eine Kamera braucht einen Namen und ihre Adresse.</translation>
    </message>
    <message>
        <source>Delete a camera</source>
        <translation>Kamera löschen</translation>
    </message>
    <message>
        <source>Find cameras…</source>
        <translation>Kameras suchen…</translation>
    </message>
    <message>
        <source>testing…</source>
        <translation>Test läuft…</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Test</source>
        <translation>Testen</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
</context>
<context>
    <name>CheckList</name>
    <message>
        <source>%1 (%2 chosen)</source>
        <translation>%1 (%2 gewählt)</translation>
    </message>
    <message>
        <source>Search</source>
        <translation>Suchen</translation>
    </message>
    <message>
        <source>Nothing is found.</source>
        <translation>Nichts gefunden.</translation>
    </message>
</context>
<context>
    <name>ConfirmDialog</name>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Keep</source>
        <translation>Behalten</translation>
    </message>
</context>
<context>
    <name>ConnectionPage</name>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>Try again now</source>
        <translation>Jetzt neu versuchen</translation>
    </message>
    <message>
        <source>Use the server on this computer</source>
        <translation>Server auf diesem Rechner nutzen</translation>
    </message>
    <message>
        <source>Another server</source>
        <translation>Anderer Server</translation>
    </message>
    <message>
        <source>Address</source>
        <translation>Adresse</translation>
    </message>
    <message>
        <source>User name (empty for a token)</source>
        <translation>Benutzername (leer für ein Token)</translation>
    </message>
    <message>
        <source>Token</source>
        <translation>Token</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Passwort</translation>
    </message>
    <message>
        <source>Fingerprint of the server&apos;s certificate, for wss</source>
        <translation>Fingerabdruck des Serverzertifikats, für wss</translation>
    </message>
    <message>
        <source>Sign in</source>
        <translation>Anmelden</translation>
    </message>
    <message>
        <source>This desk</source>
        <translation>Dieser Arbeitsplatz</translation>
    </message>
    <message>
        <source>Colours</source>
        <translation>Farben</translation>
    </message>
    <message>
        <source>As the system</source>
        <translation>Wie das System</translation>
    </message>
    <message>
        <source>Light</source>
        <translation>Hell</translation>
    </message>
    <message>
        <source>Dark</source>
        <translation>Dunkel</translation>
    </message>
    <message>
        <source>Language</source>
        <translation>Sprache</translation>
    </message>
    <message>
        <source>Keys: Ctrl and a number for each page, space bar talk while held, Ctrl+T talk on and off, Ctrl+M mute, Ctrl+F search, Ctrl+N new, Enter open, Delete delete.</source>
        <translation>Tasten: Strg und eine Zahl für jede Seite, Leertaste sprechen, solange sie gehalten wird, Strg+T Gespräch ein und aus, Strg+M stumm, Strg+F suchen, Strg+N neu, Eingabe öffnen, Entf löschen.</translation>
    </message>
</context>
<context>
    <name>Desk</name>
    <message>
        <source>Only files on this computer can be sent.</source>
        <translation>Nur Dateien auf diesem Rechner können gesendet werden.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; cannot be read.</source>
        <translation>„%1“ kann nicht gelesen werden.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is larger than %2 MiB.</source>
        <translation>„%1“ ist größer als %2 MiB.</translation>
    </message>
</context>
<context>
    <name>DeskConnection</name>
    <message>
        <source>64 hexadecimal digits, as the server shows them when it starts.</source>
        <translation>64 Hexadezimalziffern, wie sie der Server beim Start zeigt.</translation>
    </message>
    <message>
        <source>the server on this computer</source>
        <translation>der Server auf diesem Rechner</translation>
    </message>
    <message>
        <source>Connected</source>
        <translation>Verbunden</translation>
    </message>
    <message>
        <source>Connecting…</source>
        <translation>Verbinde …</translation>
    </message>
    <message>
        <source>Connection lost; trying again…</source>
        <translation>Verbindung verloren; neuer Versuch …</translation>
    </message>
    <message>
        <source>No connection; trying again…</source>
        <translation>Keine Verbindung; neuer Versuch …</translation>
    </message>
    <message>
        <source>Sign-in refused</source>
        <translation>Anmeldung abgelehnt</translation>
    </message>
    <message>
        <source>The server cannot start</source>
        <translation>Der Server startet nicht</translation>
    </message>
    <message>
        <source>Enter an address like wss://host:8440.</source>
        <translation>Eine Adresse wie wss://host:8440 eingeben.</translation>
    </message>
    <message>
        <source>An address looks like wss://host:8440, or ws:// without encryption.</source>
        <translation>Eine Adresse sieht aus wie wss://host:8440, oder ws:// ohne Verschlüsselung.</translation>
    </message>
</context>
<context>
    <name>DeskSettings</name>
    <message>
        <source>English</source>
        <comment>this language, in itself</comment>
        <translation>Deutsch</translation>
    </message>
</context>
<context>
    <name>ErrorMessages</name>
    <message>
        <source>the server does not know how to do this</source>
        <translation>der Server kann das nicht</translation>
    </message>
    <message>
        <source>the server keeps no more entries of this kind</source>
        <translation>der Server nimmt keine weiteren Einträge dieser Art auf</translation>
    </message>
    <message>
        <source>the server did not understand the request</source>
        <translation>der Server hat die Anfrage nicht verstanden</translation>
    </message>
    <message>
        <source>the server does not know this camera</source>
        <translation>der Server kennt diese Kamera nicht</translation>
    </message>
    <message>
        <source>the camera is offline</source>
        <translation>die Kamera ist nicht erreichbar</translation>
    </message>
    <message>
        <source>the camera&apos;s sound does not work</source>
        <translation>der Ton der Kamera geht nicht</translation>
    </message>
    <message>
        <source>the camera refuses the user name or the password</source>
        <translation>die Kamera lehnt den Benutzernamen oder das Passwort ab</translation>
    </message>
    <message>
        <source>the camera has no loudspeaker</source>
        <translation>die Kamera hat keinen Lautsprecher</translation>
    </message>
    <message>
        <source>the camera is busy with others</source>
        <translation>die Kamera ist belegt</translation>
    </message>
    <message>
        <source>the camera did not answer in time</source>
        <translation>die Kamera hat nicht rechtzeitig geantwortet</translation>
    </message>
    <message>
        <source>the camera refuses the talk</source>
        <translation>die Kamera lehnt das Gespräch ab</translation>
    </message>
    <message>
        <source>the server does not say which talk it has opened</source>
        <translation>der Server sagt nicht, welches Gespräch er geöffnet hat</translation>
    </message>
    <message>
        <source>a setting of the camera is not allowed</source>
        <translation>eine Einstellung der Kamera ist nicht erlaubt</translation>
    </message>
    <message>
        <source>the server is busy with other requests; try again</source>
        <translation>der Server ist mit anderen Anfragen beschäftigt; versuchen Sie es noch einmal</translation>
    </message>
    <message>
        <source>the speaker is offline</source>
        <translation>der Lautsprecher ist nicht erreichbar</translation>
    </message>
    <message>
        <source>the server cannot store it; is its disk full?</source>
        <translation>der Server kann es nicht speichern; ist seine Platte voll?</translation>
    </message>
    <message>
        <source>the speaker is not there any more</source>
        <translation>der Lautsprecher ist nicht mehr da</translation>
    </message>
    <message>
        <source>the audio file is not there any more</source>
        <translation>die Audiodatei ist nicht mehr da</translation>
    </message>
    <message>
        <source>the group is not there any more</source>
        <translation>die Gruppe ist nicht mehr da</translation>
    </message>
    <message>
        <source>the schedule is not there any more</source>
        <translation>der Zeitplan ist nicht mehr da</translation>
    </message>
    <message>
        <source>the name is not allowed</source>
        <translation>der Name ist nicht erlaubt</translation>
    </message>
    <message>
        <source>the name is taken</source>
        <translation>der Name ist vergeben</translation>
    </message>
    <message>
        <source>the address is neither an IP address nor a host name</source>
        <translation>das ist weder eine IP-Adresse noch ein Rechnername</translation>
    </message>
    <message>
        <source>the port is not 1 to 65535</source>
        <translation>der Port liegt nicht zwischen 1 und 65535</translation>
    </message>
    <message>
        <source>user name or password is too long</source>
        <translation>Benutzername oder Passwort ist zu lang</translation>
    </message>
    <message>
        <source>a chosen entry is not there any more</source>
        <translation>ein gewählter Eintrag ist nicht mehr da</translation>
    </message>
    <message>
        <source>the times make no sense</source>
        <translation>die Zeiten ergeben keinen Sinn</translation>
    </message>
    <message>
        <source>there is nothing to play on</source>
        <translation>es gibt nichts, worauf gespielt werden kann</translation>
    </message>
    <message>
        <source>the audio file cannot be played</source>
        <translation>die Audiodatei kann nicht gespielt werden</translation>
    </message>
    <message>
        <source>the server refuses the file</source>
        <translation>der Server lehnt die Datei ab</translation>
    </message>
    <message>
        <source>the server refuses it</source>
        <translation>der Server lehnt es ab</translation>
    </message>
    <message>
        <source>error %1</source>
        <translation>Fehler %1</translation>
    </message>
    <message>
        <source>the server does not know this talk</source>
        <translation>der Server kennt dieses Gespräch nicht</translation>
    </message>
    <message>
        <source>the server cannot read the sound of the microphone</source>
        <translation>der Server kann den Ton des Mikrofons nicht lesen</translation>
    </message>
    <message>
        <source>the server has no cameras of this kind</source>
        <translation>der Server hat keine Kameras dieser Art</translation>
    </message>
    <message>
        <source>the playback was stopped</source>
        <translation>die Wiedergabe wurde beendet</translation>
    </message>
    <message>
        <source>another playback has taken the speaker</source>
        <translation>eine andere Wiedergabe hat den Lautsprecher übernommen</translation>
    </message>
    <message>
        <source>%1 (the server: %2)</source>
        <translation>%1 (der Server: %2)</translation>
    </message>
    <message>
        <source>the server says: %1</source>
        <translation>der Server sagt: %1</translation>
    </message>
    <message>
        <source>the camera gives no picture</source>
        <translation>die Kamera liefert kein Bild</translation>
    </message>
</context>
<context>
    <name>FilesPage</name>
    <message>
        <source>The file cannot be sent: there is no connection to the server.</source>
        <translation>Die Datei kann nicht gesendet werden: keine Verbindung zum Server.</translation>
    </message>
    <message>
        <source>length unknown</source>
        <translation>Länge unbekannt</translation>
    </message>
    <message>
        <source>being sent…</source>
        <translation>wird gesendet …</translation>
    </message>
    <message>
        <source>refused by the server</source>
        <translation>vom Server abgelehnt</translation>
    </message>
    <message>
        <source>refused by the server; and this computer has no sound output</source>
        <translation>vom Server abgelehnt; und dieser Rechner hat keinen Tonausgang</translation>
    </message>
    <message>
        <source>not ready</source>
        <translation>nicht bereit</translation>
    </message>
    <message>
        <source>Audio files</source>
        <translation>Audiodateien</translation>
    </message>
    <message>
        <source>Search by name</source>
        <translation>Nach Namen suchen</translation>
    </message>
    <message>
        <source>Send a file…</source>
        <translation>Datei senden …</translation>
    </message>
    <message>
        <source>Play…</source>
        <translation>Abspielen …</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is still being sent. It can be taken off this list, but the server may keep it.</source>
        <translation>„%1“ wird noch gesendet. Der Eintrag kann von der Liste genommen werden, doch der Server behält die Datei vielleicht.</translation>
    </message>
    <message>
        <source>Delete &quot;%1&quot; from the server? Schedules that play it lose it. This cannot be undone.</source>
        <translation>„%1“ vom Server löschen? Zeitpläne, die sie spielen, verlieren sie. Das lässt sich nicht rückgängig machen.</translation>
    </message>
    <message>
        <source>Being sent</source>
        <translation>Wird gesendet</translation>
    </message>
    <message>
        <source>Nothing is found.</source>
        <translation>Nichts gefunden.</translation>
    </message>
    <message>
        <source>No audio files yet.</source>
        <translation>Noch keine Audiodateien.</translation>
    </message>
    <message>
        <source>No file&apos;s name has this text in it.</source>
        <translation>Kein Dateiname enthält diesen Text.</translation>
    </message>
    <message>
        <source>Drop WAV, MP3, AAC, FLAC or Ogg files here, or choose one.</source>
        <translation>WAV-, MP3-, AAC-, FLAC- oder Ogg-Dateien hier ablegen oder eine wählen.</translation>
    </message>
    <message>
        <source>Drop to send to the server</source>
        <translation>Ablegen, um sie zum Server zu senden</translation>
    </message>
    <message>
        <source>Playing</source>
        <translation>Wird gespielt</translation>
    </message>
    <message>
        <source>%1 on %2</source>
        <translation>%1 auf %2</translation>
    </message>
    <message>
        <source>starting…</source>
        <translation>beginnt …</translation>
    </message>
    <message>
        <source>%1 %</source>
        <translation>%1 %</translation>
    </message>
    <message>
        <source>played to the end</source>
        <translation>zu Ende gespielt</translation>
    </message>
    <message>
        <source>failed: %1</source>
        <translation>fehlgeschlagen: %1</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Anhalten</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Progress</source>
        <translation>Fortschritt</translation>
    </message>
    <message>
        <source>Delete an audio file</source>
        <translation>Audiodatei löschen</translation>
    </message>
    <message>
        <source>Send audio files to the server</source>
        <translation>Audiodateien zum Server senden</translation>
    </message>
    <message>
        <source>Sound (*.wav *.mp3 *.aac *.m4a *.mp4 *.flac *.ogg *.oga *.aif *.aiff)</source>
        <translation>Ton (*.wav *.mp3 *.aac *.m4a *.mp4 *.flac *.ogg *.oga *.aif *.aiff)</translation>
    </message>
    <message>
        <source>All files (*)</source>
        <translation>Alle Dateien (*)</translation>
    </message>
</context>
<context>
    <name>FindCamerasDialog</name>
    <message>
        <source>Cameras in the network of the server</source>
        <translation>Kameras im Netz des Servers</translation>
    </message>
    <message>
        <source>It gives no address of its own.</source>
        <translation>Sie nennt keine eigene Adresse.</translation>
    </message>
    <message>
        <source>Use…</source>
        <translation>Nehmen…</translation>
    </message>
    <message>
        <source>No camera answered.</source>
        <translation>Keine Kamera hat geantwortet.</translation>
    </message>
    <message>
        <source>Cameras answer only in the network of the server. Add others by their address.</source>
        <translation>Kameras antworten nur im Netz des Servers. Andere werden mit ihrer Adresse angelegt.</translation>
    </message>
    <message>
        <source>Searching…</source>
        <translation>Suche läuft…</translation>
    </message>
    <message>
        <source>What answers is not checked: choose only what you know.</source>
        <translation>Was antwortet, ist nicht geprüft: nur wählen, was bekannt ist.</translation>
    </message>
    <message>
        <source>Search again</source>
        <translation>Noch einmal suchen</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
</context>
<context>
    <name>FormDialog</name>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
</context>
<context>
    <name>GroupDialog</name>
    <message>
        <source>Add a group</source>
        <translation>Gruppe anlegen</translation>
    </message>
    <message>
        <source>Group &quot;%1&quot;</source>
        <translation>Gruppe „%1“</translation>
    </message>
    <message>
        <source>A name and at least one speaker are needed.</source>
        <translation>Ein Name und mindestens ein Lautsprecher sind nötig.</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Give the group a name.</source>
        <translation>Die Gruppe braucht einen Namen.</translation>
    </message>
    <message>
        <source>At most %1 characters.</source>
        <translation>Höchstens %1 Zeichen.</translation>
    </message>
    <message>
        <source>Speakers of the group</source>
        <translation>Lautsprecher der Gruppe</translation>
    </message>
    <message>
        <source>There are no speakers yet: add them on the page Speakers.</source>
        <translation>Noch keine Lautsprecher: auf der Seite Lautsprecher anlegen.</translation>
    </message>
</context>
<context>
    <name>GroupsPage</name>
    <message>
        <source>Groups</source>
        <translation>Gruppen</translation>
    </message>
    <message>
        <source>Search groups and members</source>
        <translation>Gruppen und Mitglieder suchen</translation>
    </message>
    <message>
        <source>Z to A</source>
        <translation>Z bis A</translation>
    </message>
    <message>
        <source>A to Z</source>
        <translation>A bis Z</translation>
    </message>
    <message>
        <source>Order: %1</source>
        <translation>Reihenfolge: %1</translation>
    </message>
    <message>
        <source>Add a group…</source>
        <translation>Gruppe anlegen …</translation>
    </message>
    <message numerus="yes">
        <source>%n speaker(s)</source>
        <translation>
            <numerusform>%n Lautsprecher</numerusform>
            <numerusform>%n Lautsprecher</numerusform>
        </translation>
    </message>
    <message>
        <source>no speakers</source>
        <translation>keine Lautsprecher</translation>
    </message>
    <message>
        <source>Delete the group &quot;%1&quot;? Its speakers stay. Schedules that play on it lose it. This cannot be undone.</source>
        <translation>Die Gruppe „%1“ löschen? Ihre Lautsprecher bleiben. Zeitpläne, die auf ihr spielen, verlieren sie. Das lässt sich nicht rückgängig machen.</translation>
    </message>
    <message>
        <source>Nothing is found.</source>
        <translation>Nichts gefunden.</translation>
    </message>
    <message>
        <source>No groups yet.</source>
        <translation>Noch keine Gruppen.</translation>
    </message>
    <message>
        <source>Neither a group nor one of its members has this text in its name.</source>
        <translation>Weder eine Gruppe noch eines ihrer Mitglieder enthält diesen Text im Namen.</translation>
    </message>
    <message>
        <source>A group plays a file on several speakers at once, in step.</source>
        <translation>Eine Gruppe spielt eine Datei auf mehreren Lautsprechern zugleich, im Gleichtakt.</translation>
    </message>
    <message>
        <source>Delete a group</source>
        <translation>Gruppe löschen</translation>
    </message>
</context>
<context>
    <name>LevelMeter</name>
    <message>
        <source>%1 percent</source>
        <translation>%1 Prozent</translation>
    </message>
</context>
<context>
    <name>LiveVideo</name>
    <message>
        <source>the server does not answer</source>
        <translation>der Server antwortet nicht</translation>
    </message>
    <message>
        <source>this program has no decoder for H.264</source>
        <translation>dieses Programm hat keinen Decoder für H.264</translation>
    </message>
    <message>
        <source>the video cannot be decoded</source>
        <translation>das Video ist nicht zu lesen</translation>
    </message>
</context>
<context>
    <name>Main</name>
    <message>
        <source>Talking to %1 – VoiceDesk</source>
        <translation>Im Gespräch mit %1 – VoiceDesk</translation>
    </message>
    <message>
        <source>VoiceDesk</source>
        <translation>VoiceDesk</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>Connection…</source>
        <translation>Verbindung …</translation>
    </message>
    <message>
        <source>The server does not answer.</source>
        <translation>Der Server antwortet nicht.</translation>
    </message>
    <message>
        <source>What was asked last may or may not have been done. Look at the list before you try again.</source>
        <translation>Was zuletzt verlangt wurde, ist vielleicht geschehen, vielleicht nicht. Vor einem neuen Versuch die Liste ansehen.</translation>
    </message>
    <message>
        <source>Closing during a talk</source>
        <translation>Schließen während eines Gesprächs</translation>
    </message>
    <message>
        <source>You are talking to %1. Closing the window ends the talk.</source>
        <translation>Es läuft ein Gespräch mit %1. Mit dem Fenster endet auch das Gespräch.</translation>
    </message>
    <message>
        <source>A talk is being opened. Closing the window gives it up.</source>
        <translation>Ein Gespräch wird aufgebaut. Mit dem Fenster wird es aufgegeben.</translation>
    </message>
    <message>
        <source>End the talk and close</source>
        <translation>Gespräch beenden und schließen</translation>
    </message>
    <message>
        <source>Keep talking</source>
        <translation>Weitersprechen</translation>
    </message>
</context>
<context>
    <name>MomentField</name>
    <message>
        <source>%1: day, like 2026-12-31</source>
        <translation>%1: Tag, wie 2026-12-31</translation>
    </message>
    <message>
        <source>%1: time, like 08:30</source>
        <translation>%1: Uhrzeit, wie 08:30</translation>
    </message>
</context>
<context>
    <name>OnAir</name>
    <message>
        <source>Talking to %1</source>
        <translation>Im Gespräch mit %1</translation>
    </message>
    <message>
        <source>End the talk</source>
        <translation>Gespräch beenden</translation>
    </message>
    <message>
        <source>The microphone is muted.</source>
        <translation>Das Mikrofon ist stumm.</translation>
    </message>
</context>
<context>
    <name>PageHead</name>
    <message>
        <source>%1 of %2</source>
        <translation>%1 von %2</translation>
    </message>
</context>
<context>
    <name>Pages</name>
    <message>
        <source>Talk</source>
        <translation>Sprechen</translation>
    </message>
    <message>
        <source>Speakers</source>
        <translation>Lautsprecher</translation>
    </message>
    <message>
        <source>Audio files</source>
        <translation>Audiodateien</translation>
    </message>
    <message>
        <source>Groups</source>
        <translation>Gruppen</translation>
    </message>
    <message>
        <source>Schedules</source>
        <translation>Zeitpläne</translation>
    </message>
    <message>
        <source>Connection</source>
        <translation>Verbindung</translation>
    </message>
    <message>
        <source>Cameras</source>
        <translation>Kameras</translation>
    </message>
</context>
<context>
    <name>PendingRequest</name>
    <message>
        <source>There is no connection to the server.</source>
        <translation>Es besteht keine Verbindung zum Server.</translation>
    </message>
    <message>
        <source>Not done: %1.</source>
        <translation>Nicht ausgeführt: %1.</translation>
    </message>
    <message>
        <source>The server did not answer. Nobody knows whether it was done: look at the list before you try again.</source>
        <translation>Der Server hat nicht geantwortet. Niemand weiß, ob es geschehen ist: vor einem neuen Versuch die Liste ansehen.</translation>
    </message>
</context>
<context>
    <name>PlayDialog</name>
    <message>
        <source>Play &quot;%1&quot;</source>
        <translation>„%1“ abspielen</translation>
    </message>
    <message>
        <source>On a speaker</source>
        <translation>Auf einem Lautsprecher</translation>
    </message>
    <message>
        <source>On a group</source>
        <translation>Auf einer Gruppe</translation>
    </message>
    <message>
        <source>Search by name</source>
        <translation>Nach Namen suchen</translation>
    </message>
    <message>
        <source>Groups</source>
        <translation>Gruppen</translation>
    </message>
    <message>
        <source>Speakers</source>
        <translation>Lautsprecher</translation>
    </message>
    <message>
        <source>Nothing is found.</source>
        <translation>Nichts gefunden.</translation>
    </message>
    <message>
        <source>No groups yet.</source>
        <translation>Noch keine Gruppen.</translation>
    </message>
    <message>
        <source>No speakers yet.</source>
        <translation>Noch keine Lautsprecher.</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
</context>
<context>
    <name>PlaybackModel</name>
    <message>
        <source>&quot;%1&quot; was not played on %2: %3</source>
        <translation>„%1“ wurde auf %2 nicht gespielt: %3</translation>
    </message>
    <message>
        <source>Schedule &quot;%1&quot;: &quot;%2&quot; was not played on %3: %4</source>
        <translation>Zeitplan „%1“: „%2“ wurde auf %3 nicht gespielt: %4</translation>
    </message>
    <message>
        <source>no answer from the server</source>
        <translation>keine Antwort vom Server</translation>
    </message>
    <message>
        <source>the server cannot be asked</source>
        <translation>der Server kann nicht gefragt werden</translation>
    </message>
    <message>
        <source>&quot;%1&quot; was not stopped on %2: %3</source>
        <translation>„%1“ wurde auf %2 nicht beendet: %3</translation>
    </message>
    <message>
        <source>the connection to the server was lost</source>
        <translation>die Verbindung zum Server ging verloren</translation>
    </message>
</context>
<context>
    <name>RecordRow</name>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>Edit…</source>
        <translation>Ändern …</translation>
    </message>
    <message>
        <source>%1: edit</source>
        <translation>%1: ändern</translation>
    </message>
    <message>
        <source>Delete…</source>
        <translation>Löschen …</translation>
    </message>
    <message>
        <source>%1: delete</source>
        <translation>%1: löschen</translation>
    </message>
</context>
<context>
    <name>ScheduleDialog</name>
    <message>
        <source>Add a schedule</source>
        <translation>Zeitplan anlegen</translation>
    </message>
    <message>
        <source>Schedule &quot;%1&quot;</source>
        <translation>Zeitplan „%1“</translation>
    </message>
    <message>
        <source>The name has more than %1 characters.</source>
        <translation>Der Name hat mehr als %1 Zeichen.</translation>
    </message>
    <message>
        <source>The start is not a date and time.</source>
        <translation>Der Beginn ist kein Datum mit Uhrzeit.</translation>
    </message>
    <message>
        <source>The end is not a date and time.</source>
        <translation>Das Ende ist kein Datum mit Uhrzeit.</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Give the schedule a name.</source>
        <translation>Der Zeitplan braucht einen Namen.</translation>
    </message>
    <message>
        <source>Audio file</source>
        <translation>Audiodatei</translation>
    </message>
    <message>
        <source>Choose a file</source>
        <translation>Datei wählen</translation>
    </message>
    <message>
        <source>How often</source>
        <translation>Wie oft</translation>
    </message>
    <message>
        <source>Once</source>
        <translation>Einmal</translation>
    </message>
    <message>
        <source>Every day</source>
        <translation>Jeden Tag</translation>
    </message>
    <message>
        <source>On days of the week</source>
        <translation>An Wochentagen</translation>
    </message>
    <message>
        <source>Days</source>
        <translation>Tage</translation>
    </message>
    <message>
        <source>When</source>
        <translation>Wann</translation>
    </message>
    <message>
        <source>From</source>
        <translation>Ab</translation>
    </message>
    <message>
        <source>Start</source>
        <translation>Beginn</translation>
    </message>
    <message>
        <source>Until</source>
        <translation>Bis</translation>
    </message>
    <message>
        <source>End</source>
        <translation>Ende</translation>
    </message>
    <message>
        <source>Speakers</source>
        <translation>Lautsprecher</translation>
    </message>
    <message>
        <source>No speakers yet.</source>
        <translation>Noch keine Lautsprecher.</translation>
    </message>
    <message>
        <source>Groups</source>
        <translation>Gruppen</translation>
    </message>
    <message>
        <source>No groups yet.</source>
        <translation>Noch keine Gruppen.</translation>
    </message>
    <message>
        <source>Next run: %1 (the server&apos;s time)</source>
        <translation>Nächster Lauf: %1 (Zeit des Servers)</translation>
    </message>
</context>
<context>
    <name>ScheduleText</name>
    <message>
        <source>switched off</source>
        <translation>ausgeschaltet</translation>
    </message>
    <message>
        <source>its file was deleted</source>
        <translation>seine Datei wurde gelöscht</translation>
    </message>
    <message>
        <source>not any more</source>
        <translation>nicht mehr</translation>
    </message>
    <message>
        <source>today at %1</source>
        <translation>heute um %1</translation>
    </message>
    <message>
        <source>tomorrow at %1</source>
        <translation>morgen um %1</translation>
    </message>
    <message>
        <source>on %1 at %2</source>
        <translation>am %1 um %2</translation>
    </message>
    <message>
        <source>once</source>
        <translation>einmal</translation>
    </message>
    <message>
        <source>every day</source>
        <translation>jeden Tag</translation>
    </message>
</context>
<context>
    <name>ScheduleValidator</name>
    <message>
        <source>Give the schedule a name.</source>
        <translation>Der Zeitplan braucht einen Namen.</translation>
    </message>
    <message>
        <source>Choose at least one day of the week.</source>
        <translation>Mindestens einen Wochentag wählen.</translation>
    </message>
    <message>
        <source>The times make no sense.</source>
        <translation>Die Zeiten ergeben keinen Sinn.</translation>
    </message>
    <message>
        <source>It would never run: its time is over.</source>
        <translation>Er liefe nie: seine Zeit ist vorbei.</translation>
    </message>
    <message>
        <source>Choose an audio file.</source>
        <translation>Eine Audiodatei wählen.</translation>
    </message>
    <message>
        <source>Choose at least one speaker or group.</source>
        <translation>Mindestens einen Lautsprecher oder eine Gruppe wählen.</translation>
    </message>
</context>
<context>
    <name>SchedulesPage</name>
    <message>
        <source>no file</source>
        <translation>keine Datei</translation>
    </message>
    <message>
        <source>Delete the schedule &quot;%1&quot;? This cannot be undone.</source>
        <translation>Den Zeitplan „%1“ löschen? Das lässt sich nicht rückgängig machen.</translation>
    </message>
    <message>
        <source>Schedules</source>
        <translation>Zeitpläne</translation>
    </message>
    <message>
        <source>List</source>
        <translation>Liste</translation>
    </message>
    <message>
        <source>Week</source>
        <translation>Woche</translation>
    </message>
    <message>
        <source>Add a schedule…</source>
        <translation>Zeitplan anlegen …</translation>
    </message>
    <message>
        <source>%1: switched on</source>
        <translation>%1: eingeschaltet</translation>
    </message>
    <message>
        <source>No schedules yet.</source>
        <translation>Noch keine Zeitpläne.</translation>
    </message>
    <message>
        <source>A schedule plays an audio file by itself: once, every day, or on days of the week.</source>
        <translation>Ein Zeitplan spielt eine Audiodatei von selbst: einmal, jeden Tag oder an Wochentagen.</translation>
    </message>
    <message>
        <source>Delete a schedule</source>
        <translation>Zeitplan löschen</translation>
    </message>
    <message>
        <source>%1, %2</source>
        <translation>%1, %2</translation>
    </message>
    <message>
        <source>Next run: %1</source>
        <translation>Nächster Lauf: %1</translation>
    </message>
</context>
<context>
    <name>SearchField</name>
    <message>
        <source>Empty the search</source>
        <translation>Suche leeren</translation>
    </message>
</context>
<context>
    <name>SpeakerDialog</name>
    <message>
        <source>Add a speaker</source>
        <translation>Lautsprecher anlegen</translation>
    </message>
    <message>
        <source>Speaker &quot;%1&quot;</source>
        <translation>Lautsprecher „%1“</translation>
    </message>
    <message>
        <source>A name, an address and a port are needed.</source>
        <translation>Name, Adresse und Port sind nötig.</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Give the speaker a name.</source>
        <translation>Der Lautsprecher braucht einen Namen.</translation>
    </message>
    <message>
        <source>At most %1 characters.</source>
        <translation>Höchstens %1 Zeichen.</translation>
    </message>
    <message>
        <source>Address</source>
        <translation>Adresse</translation>
    </message>
    <message>
        <source>An IP address or host name.</source>
        <translation>Eine IP-Adresse oder ein Rechnername.</translation>
    </message>
    <message>
        <source>Port</source>
        <translation>Port</translation>
    </message>
    <message>
        <source>1 to %1.</source>
        <translation>1 bis %1.</translation>
    </message>
    <message>
        <source>User name</source>
        <translation>Benutzername</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Passwort</translation>
    </message>
    <message>
        <source>Bound to cameras</source>
        <translation>An Kameras gebunden</translation>
    </message>
    <message>
        <source>The server has no cameras.</source>
        <translation>Der Server hat keine Kameras.</translation>
    </message>
</context>
<context>
    <name>SpeakerTest</name>
    <message>
        <source>no answer</source>
        <translation>keine Antwort</translation>
    </message>
    <message>
        <source>the server cannot be asked</source>
        <translation>der Server kann nicht gefragt werden</translation>
    </message>
    <message>
        <source>The speaker answers.</source>
        <translation>Der Lautsprecher antwortet.</translation>
    </message>
    <message>
        <source>The speaker does not answer: %1</source>
        <translation>Der Lautsprecher antwortet nicht: %1</translation>
    </message>
</context>
<context>
    <name>SpeakersPage</name>
    <message>
        <source>Speakers</source>
        <translation>Lautsprecher</translation>
    </message>
    <message>
        <source>Search by name</source>
        <translation>Nach Namen suchen</translation>
    </message>
    <message>
        <source>Add a speaker…</source>
        <translation>Lautsprecher anlegen …</translation>
    </message>
    <message numerus="yes">
        <source>%n camera(s)</source>
        <translation>
            <numerusform>%n Kamera</numerusform>
            <numerusform>%n Kameras</numerusform>
        </translation>
    </message>
    <message>
        <source>testing…</source>
        <translation>wird geprüft …</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Test</source>
        <translation>Prüfen</translation>
    </message>
    <message>
        <source>Delete the speaker &quot;%1&quot;? Groups and schedules lose it, too. This cannot be undone.</source>
        <translation>Den Lautsprecher „%1“ löschen? Auch Gruppen und Zeitpläne verlieren ihn. Das lässt sich nicht rückgängig machen.</translation>
    </message>
    <message>
        <source>Nothing is found.</source>
        <translation>Nichts gefunden.</translation>
    </message>
    <message>
        <source>No speakers yet.</source>
        <translation>Noch keine Lautsprecher.</translation>
    </message>
    <message>
        <source>No speaker&apos;s name has this text in it.</source>
        <translation>Kein Lautsprechername enthält diesen Text.</translation>
    </message>
    <message>
        <source>A speaker needs a name, its address and its port.</source>
        <translation>Ein Lautsprecher braucht einen Namen, seine Adresse und seinen Port.</translation>
    </message>
    <message>
        <source>Delete a speaker</source>
        <translation>Lautsprecher löschen</translation>
    </message>
</context>
<context>
    <name>TalkControl</name>
    <message>
        <source>The connection to the server was lost; the talk has ended.</source>
        <translation>Die Verbindung zum Server ging verloren; das Gespräch ist beendet.</translation>
    </message>
    <message>
        <source>It is being made again. Then press Talk again.</source>
        <translation>Sie wird neu aufgebaut. Danach wieder auf Sprechen drücken.</translation>
    </message>
    <message>
        <source>It is there again: press Talk.</source>
        <translation>Sie ist wieder da: auf Sprechen drücken.</translation>
    </message>
    <message>
        <source>The server cannot be asked.</source>
        <translation>Der Server kann nicht gefragt werden.</translation>
    </message>
    <message>
        <source>Nobody is chosen.</source>
        <translation>Niemand ist gewählt.</translation>
    </message>
    <message>
        <source>Choose a camera or speakers in the list, then press Talk.</source>
        <translation>Eine Kamera oder Lautsprecher in der Liste wählen, dann auf Sprechen drücken.</translation>
    </message>
    <message>
        <source>There is no connection to the server.</source>
        <translation>Es besteht keine Verbindung zum Server.</translation>
    </message>
    <message>
        <source>See the connection page; then press Talk again.</source>
        <translation>Siehe die Seite Verbindung; danach wieder auf Sprechen drücken.</translation>
    </message>
    <message>
        <source>The microphone cannot be opened.</source>
        <translation>Das Mikrofon lässt sich nicht öffnen.</translation>
    </message>
    <message>
        <source>Plug a microphone in, or allow this program to use it; then press Talk again.</source>
        <translation>Ein Mikrofon anschließen oder diesem Programm erlauben; dann wieder auf Sprechen drücken.</translation>
    </message>
    <message>
        <source>%1 cannot be talked to: %2</source>
        <translation>%1 ist nicht zu sprechen: %2</translation>
    </message>
    <message>
        <source>Check the camera&apos;s power and network, or choose another one.</source>
        <translation>Strom und Netz der Kamera prüfen oder eine andere wählen.</translation>
    </message>
    <message>
        <source>Press Talk again later, or choose another one.</source>
        <translation>Später wieder auf Sprechen drücken oder eine andere wählen.</translation>
    </message>
    <message>
        <source>the server refuses it</source>
        <translation>der Server lehnt es ab</translation>
    </message>
    <message>
        <source>Check the speaker&apos;s power and network, or choose another one.</source>
        <translation>Strom und Netz des Lautsprechers prüfen oder einen anderen wählen.</translation>
    </message>
    <message>
        <source>%1 was lost.</source>
        <translation>%1 ist nicht mehr erreichbar.</translation>
    </message>
    <message>
        <source>%1 was lost: %2</source>
        <translation>%1 ist nicht mehr erreichbar: %2</translation>
    </message>
    <message>
        <source>To talk to it again, end the talk and press Talk again.</source>
        <translation>Um wieder damit zu sprechen, das Gespräch beenden und neu beginnen.</translation>
    </message>
    <message>
        <source>The talk goes on with the others.</source>
        <translation>Das Gespräch geht mit den anderen weiter.</translation>
    </message>
    <message>
        <source>The other side was lost; the talk has ended.</source>
        <translation>Die Gegenstelle ging verloren; das Gespräch ist beendet.</translation>
    </message>
    <message>
        <source>Check its power and network, then press Talk again.</source>
        <translation>Deren Strom und Netz prüfen, dann wieder auf Sprechen drücken.</translation>
    </message>
    <message>
        <source>The microphone is gone; a talk that ran has ended.</source>
        <translation>Das Mikrofon ist weg; ein laufendes Gespräch ist beendet.</translation>
    </message>
    <message>
        <source>Plug it in again, then press Talk.</source>
        <translation>Wieder anschließen, dann auf Sprechen drücken.</translation>
    </message>
    <message>
        <source>The server did not answer in time.</source>
        <translation>Der Server hat nicht rechtzeitig geantwortet.</translation>
    </message>
    <message>
        <source>See whether it runs and can be reached; then press Talk again.</source>
        <translation>Prüfen, ob er läuft und erreichbar ist; dann wieder auf Sprechen drücken.</translation>
    </message>
    <message>
        <source>The microphone gives no sound.</source>
        <translation>Vom Mikrofon kommt kein Ton.</translation>
    </message>
    <message>
        <source>Is it plugged in, and is it the one that the system uses?</source>
        <translation>Ist es angeschlossen, und ist es das, welches das System nutzt?</translation>
    </message>
    <message>
        <source>A speaker is being tested.</source>
        <translation>Ein Lautsprecher wird gerade geprüft.</translation>
    </message>
    <message>
        <source>Press Talk again when the test is over.</source>
        <translation>Nach der Prüfung wieder auf Sprechen drücken.</translation>
    </message>
    <message>
        <source>Somebody answered too late and would have listened; the talk has ended.</source>
        <translation>Jemand hat zu spät geantwortet und hätte mitgehört; das Gespräch ist beendet.</translation>
    </message>
    <message>
        <source>Press Talk again.</source>
        <translation>Wieder auf Sprechen drücken.</translation>
    </message>
</context>
<context>
    <name>TalkPage</name>
    <message>
        <source>Talk</source>
        <translation>Sprechen</translation>
    </message>
    <message>
        <source>Search cameras and speakers</source>
        <translation>Kameras und Lautsprecher suchen</translation>
    </message>
    <message>
        <source>Cameras and speakers</source>
        <translation>Kameras und Lautsprecher</translation>
    </message>
    <message>
        <source>Cameras</source>
        <translation>Kameras</translation>
    </message>
    <message>
        <source>Speakers</source>
        <translation>Lautsprecher</translation>
    </message>
    <message>
        <source>Nothing is found.</source>
        <translation>Nichts gefunden.</translation>
    </message>
    <message>
        <source>No cameras and no speakers yet.</source>
        <translation>Noch keine Kameras und Lautsprecher.</translation>
    </message>
    <message>
        <source>Names and addresses are searched.</source>
        <translation>Gesucht wird in Namen und Adressen.</translation>
    </message>
    <message>
        <source>Add a camera on the page Cameras or a speaker on the page Speakers, or connect with another server.</source>
        <translation>Auf der Seite Kameras eine Kamera oder auf der Seite Lautsprecher einen Lautsprecher anlegen oder einen anderen Server wählen.</translation>
    </message>
    <message>
        <source>Enter chooses. One camera at most, any number of speakers.</source>
        <translation>Eingabe wählt. Höchstens eine Kamera, beliebig viele Lautsprecher.</translation>
    </message>
    <message>
        <source>Talking to %1</source>
        <translation>Im Gespräch mit %1</translation>
    </message>
    <message>
        <source>Calling %1…</source>
        <translation>Rufe %1 …</translation>
    </message>
    <message>
        <source>Choose whom to talk to</source>
        <translation>Wählen, mit wem gesprochen wird</translation>
    </message>
    <message>
        <source>Talking for %1</source>
        <translation>Gesprächsdauer %1</translation>
    </message>
    <message>
        <source>No talk</source>
        <translation>Kein Gespräch</translation>
    </message>
    <message>
        <source>End</source>
        <translation>Ende</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>End the talk</source>
        <translation>Gespräch beenden</translation>
    </message>
    <message>
        <source>Or hold the space bar</source>
        <translation>Oder die Leertaste halten</translation>
    </message>
    <message>
        <source>Talking while you hold the space bar</source>
        <translation>Gespräch, solange die Leertaste gehalten wird</translation>
    </message>
    <message>
        <source>Hold the space bar to talk, or press the button</source>
        <translation>Zum Sprechen die Leertaste halten oder den Knopf drücken</translation>
    </message>
    <message>
        <source>MICROPHONE MUTED – nobody hears you</source>
        <translation>MIKROFON STUMM – niemand hört Sie</translation>
    </message>
    <message>
        <source>Microphone</source>
        <translation>Mikrofon</translation>
    </message>
    <message>
        <source>Level of the microphone</source>
        <translation>Pegel des Mikrofons</translation>
    </message>
    <message>
        <source>Unmute</source>
        <translation>Stumm aus</translation>
    </message>
    <message>
        <source>Mute</source>
        <translation>Stumm</translation>
    </message>
    <message>
        <source>Mute the microphone</source>
        <translation>Mikrofon stumm schalten</translation>
    </message>
    <message>
        <source>Volume</source>
        <translation>Lautstärke</translation>
    </message>
    <message>
        <source>Volume of the microphone</source>
        <translation>Lautstärke des Mikrofons</translation>
    </message>
    <message>
        <source>%1 %</source>
        <translation>%1 %</translation>
    </message>
    <message>
        <source>Heard</source>
        <translation>Gehört</translation>
    </message>
    <message>
        <source>Level of what is heard</source>
        <translation>Pegel des Gehörten</translation>
    </message>
    <message>
        <source>Said, the last ten seconds</source>
        <translation>Gesagt, die letzten zehn Sekunden</translation>
    </message>
    <message>
        <source>Press the button to end the talk</source>
        <translation>Zum Beenden den Knopf drücken</translation>
    </message>
    <message>
        <source>Nobody hears you yet</source>
        <translation>Noch hört Sie niemand</translation>
    </message>
    <message>
        <source>Press the button to talk</source>
        <translation>Zum Sprechen den Knopf drücken</translation>
    </message>
</context>
<context>
    <name>TargetRow</name>
    <message>
        <source>offline</source>
        <translation>nicht erreichbar</translation>
    </message>
    <message>
        <source>calling…</source>
        <translation>wird gerufen …</translation>
    </message>
    <message>
        <source>talking</source>
        <translation>im Gespräch</translation>
    </message>
    <message>
        <source>failed</source>
        <translation>fehlgeschlagen</translation>
    </message>
    <message>
        <source>Camera, %1</source>
        <translation>Kamera, %1</translation>
    </message>
    <message>
        <source>Speaker, %1</source>
        <translation>Lautsprecher, %1</translation>
    </message>
</context>
<context>
    <name>WeekView</name>
    <message>
        <source>‹ Earlier</source>
        <translation>‹ Früher</translation>
    </message>
    <message>
        <source>This week</source>
        <translation>Diese Woche</translation>
    </message>
    <message>
        <source>Later ›</source>
        <translation>Später ›</translation>
    </message>
    <message>
        <source>%1 to %2</source>
        <translation>%1 bis %2</translation>
    </message>
</context>
</TS>
