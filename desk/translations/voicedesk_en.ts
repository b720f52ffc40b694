<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en">
<context>
    <name>GroupsPage</name>
    <message numerus="yes">
        <source>%n speaker(s)</source>
        <translation>
            <numerusform>%n speaker</numerusform>
            <numerusform>%n speakers</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>SpeakersPage</name>
    <message numerus="yes">
        <source>%n camera(s)</source>
        <translation>
            <numerusform>%n camera</numerusform>
            <numerusform>%n cameras</numerusform>
        </translation>
    </message>
</context>
</TS>
