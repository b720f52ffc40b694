<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de">
<context>
    <name>Banner</name>
    <message>
        <source>Close</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Close the message</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>CheckList</name>
    <message>
        <source>%1 (%2 chosen)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Search</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nothing is found.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ConfirmDialog</name>
    <message>
        <source>Delete</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keep</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ConnectionPage</name>
    <message>
        <source>Connection</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Try again now</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Use the server on this computer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Another server</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Address</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>User name (empty for a token)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Token</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Password</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Fingerprint of the server&apos;s certificate, for wss</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>64 hexadecimal digits, as the server shows them when it starts.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sign in</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This desk</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Colours</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>As the system</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Light</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Dark</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Language</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keys: Ctrl+1 to Ctrl+6 pages, space bar talk while held, Ctrl+T talk on and off, Ctrl+M mute, Ctrl+F search, Ctrl+N new, Enter open, Delete delete.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Desk</name>
    <message>
        <source>Only files on this computer can be sent.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&quot;%1&quot; cannot be read.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&quot;%1&quot; is larger than 32 MiB.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>DeskConnection</name>
    <message>
        <source>the server on this computer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Connected</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Connecting…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Connection lost; trying again…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sign-in refused</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server cannot start</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Enter an address like wss://host:8440.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>An address looks like wss://host:8440, or ws:// without encryption.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ErrorWords</name>
    <message>
        <source>the server does not know how to do this</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the server did not understand the request</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the server does not know this camera</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the camera is offline</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the camera&apos;s sound does not work</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the speaker is offline</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the server cannot store it; is its disk full?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the speaker is not there any more</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the audio file is not there any more</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the group is not there any more</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the schedule is not there any more</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the name is not allowed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the name is taken</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the address is no IP address and no host name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the port is not 1 to 65535</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>user name or password is too long</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>a chosen entry is not there any more</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the times make no sense</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>there is nothing to play on</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the audio file cannot be played</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the server refuses the file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the server refuses it</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>error %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>FilesPage</name>
    <message>
        <source>The file cannot be sent: there is no connection to the server.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>length unknown</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>being sent…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>refused by the server</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>refused by the server; and this computer has no sound output</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>not ready</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Audio files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Search by name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Send a file…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Play…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&quot;%1&quot; is still being sent. It can be taken off this list, but the server may keep it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete &quot;%1&quot; from the server? Schedules that play it lose it. This cannot be undone.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Being sent</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nothing is found.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No audio files yet.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No file&apos;s name has this text in it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Drop WAV, MP3, AAC, FLAC or Ogg files here, or choose one.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Drop to send to the server</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Playing</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 on %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>starting…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 %</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>played to the end</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>failed: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Stop</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Close</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Progress</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete an audio file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Send audio files to the server</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sound (*.wav *.mp3 *.aac *.m4a *.mp4 *.flac *.ogg *.oga *.aif *.aiff)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>All files (*)</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>FormDialog</name>
    <message>
        <source>Save</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>GroupDialog</name>
    <message>
        <source>Add a group</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Group &quot;%1&quot;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A name and at least one speaker are needed.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Give the group a name.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>At most 128 characters.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Speakers of the group</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There are no speakers yet: add them on the page Speakers.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>GroupsPage</name>
    <message>
        <source>Groups</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Search groups and members</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Z to A</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A to Z</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Order: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add a group…</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>%n speaker(s)</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>no speakers</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete the group &quot;%1&quot;? Its speakers stay. Schedules that play on it lose it. This cannot be undone.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nothing is found.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No groups yet.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Neither a group nor one of its members has this text in its name.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A group plays a file on several speakers at once, in step.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete a group</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>LevelMeter</name>
    <message>
        <source>%1 percent</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Main</name>
    <message>
        <source>Talking to %1 – VoiceDesk</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>VoiceDesk</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Talk</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Speakers</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Audio files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Groups</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Schedules</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Connection</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Connection…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server does not answer.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>What was asked last may or may not have been done. Look at the list before you try again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Talking to %1, but the microphone is muted</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Talking to %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>End the talk</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>MomentField</name>
    <message>
        <source>%1: day, like 2026-12-31</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1: time, like 08:30</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PendingRequest</name>
    <message>
        <source>There is no connection to the server.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Not done: %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server did not answer. Nobody knows whether it was done: look at the list before you try again.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PlayDialog</name>
    <message>
        <source>Play &quot;%1&quot;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>On a speaker</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>On a group</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Search by name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Groups</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Speakers</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nothing is found.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No groups yet.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No speakers yet.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PlaybackBook</name>
    <message>
        <source>&quot;%1&quot; was not played on %2: %3</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Schedule &quot;%1&quot;: &quot;%2&quot; was not played on %3: %4</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>no answer from the server</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the connection to the server was lost</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>RecordRow</name>
    <message>
        <source>%1: %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Edit…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1: edit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1: delete</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ScheduleDialog</name>
    <message>
        <source>Add a schedule</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Schedule &quot;%1&quot;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The name has more than 128 characters.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The start is no date and time.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The end is no date and time.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Give the schedule a name.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Audio file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Choose a file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>How often</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Once</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Every day</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>On days of the week</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Days</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>When</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>From</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Start</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Until</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>End</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Speakers</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No speakers yet.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Groups</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No groups yet.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Next run: %1 (the server&apos;s time)</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ScheduleWords</name>
    <message>
        <source>Give the schedule a name.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Choose at least one day of the week.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The times make no sense.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>It would never run: its time is over.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Choose an audio file.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Choose at least one speaker or group.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>switched off</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>its file was deleted</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>not any more</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>today at %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>tomorrow at %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>on %1 at %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>once</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>every day</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SchedulesPage</name>
    <message>
        <source>no file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete the schedule &quot;%1&quot;? This cannot be undone.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Schedules</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>List</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Week</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add a schedule…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1, %2 · next run: %3</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1: switched on</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No schedules yet.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A schedule plays an audio file by itself: once, every day, or on days of the week.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete a schedule</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SearchField</name>
    <message>
        <source>Empty the search</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SpeakerDialog</name>
    <message>
        <source>Add a speaker</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Speaker &quot;%1&quot;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A name, an address and a port are needed.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Give the speaker a name.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>At most 128 characters.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Address</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>An IP address or host name.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Port</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1 to 65535.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>User name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>At most 256 characters.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Password</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Bound to cameras</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server has no cameras.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SpeakersPage</name>
    <message>
        <source>Speakers</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Search by name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add a speaker…</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>%n camera(s)</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>testing…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Test</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete the speaker &quot;%1&quot;? Groups and schedules lose it, too. This cannot be undone.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nothing is found.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No speakers yet.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No speaker&apos;s name has this text in it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A speaker needs a name, its address and its port.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete a speaker</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TalkControl</name>
    <message>
        <source>The connection to the server was lost; the talk has ended.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>It is being made again. Then press Talk again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nobody is chosen.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Choose a camera or speakers in the list, then press Talk.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is no connection to the server.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>See the connection page; then press Talk again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The microphone cannot be opened.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Plug a microphone in, or allow this program to use it; then press Talk again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 cannot be talked to: %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Check the camera&apos;s power and network, or choose another one.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the server refuses it</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Check the speaker&apos;s power and network, or choose another one.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The talk goes on with the others.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The other side was lost; the talk has ended.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Check its power and network, then press Talk again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The microphone is gone; a talk that ran has ended.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Plug it in again, then press Talk.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>no answer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The server did not answer in time.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>See whether it runs and can be reached; then press Talk again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the server cannot be asked</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The speaker answers.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The speaker does not answer: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The microphone gives no sound.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Is it plugged in, and is it the one that the system uses?</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TalkPage</name>
    <message>
        <source>Talk</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Search cameras and speakers</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cameras and speakers</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cameras</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Speakers</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nothing is found.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No cameras and no speakers yet.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Names and addresses are searched.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add a speaker on the page Speakers, or connect with another server.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Enter chooses. One camera at most, any number of speakers.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Talking to %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Calling %1…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Choose whom to talk to</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Talking for %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No talk</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>End</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>End the talk</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Or hold the space bar</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Talking while you hold the space bar</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Hold the space bar to talk, or press the button</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>MICROPHONE MUTED – nobody hears you</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Microphone</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Level of the microphone</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unmute</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Mute</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Mute the microphone</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Volume</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Volume of the microphone</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 %</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Heard</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Level of what is heard</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Said, the last ten seconds</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TargetRow</name>
    <message>
        <source>offline</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>calling…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>talking</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>failed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Camera, %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Speaker, %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>WeekView</name>
    <message>
        <source>‹ Earlier</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This week</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Later ›</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 to %2</source>
        <translation type="unfinished"></translation>
    </message>
</context>
</TS>
