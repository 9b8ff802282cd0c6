-- Schema of the shipped verb database. The app reads these tables and writes
-- only favourite and history; the build tool creates them and fills the rest.
CREATE TABLE pronoun (
    _id     INTEGER PRIMARY KEY,
    pronoun TEXT NOT NULL
);

CREATE TABLE verb (
    _id                   INTEGER PRIMARY KEY,
    italian               TEXT NOT NULL,
    simplified_italian    TEXT NOT NULL,
    english               TEXT,
    german                TEXT,
    simplified_german     TEXT,
    french                TEXT,
    simplified_french     TEXT,
    spanish               TEXT,
    simplified_spanish    TEXT,
    dutch                 TEXT,
    simplified_dutch      TEXT,
    portuguese            TEXT,
    simplified_portuguese TEXT,
    turkish               TEXT,
    simplified_turkish    TEXT,
    voice_available       INTEGER NOT NULL DEFAULT 0,
    -- "are", "ere", "ire", "isc" (-ire with -isc-) for a verb with no irregular form,
    -- else "irregular"; model_id is then the verb it conjugates like, if any.
    pattern               TEXT,
    model_id              INTEGER,
    -- Place among the most frequent verbs of film subtitles (1 = most frequent), NULL
    -- beyond the ranked ones; lists of common verbs are cut and ordered by it.
    frequency_rank        INTEGER
);

-- Most of the file is forms, and the app reads them a verb at a time in conj_order:
-- a table clustered on (verbid, conj_order) serves that without a separate index. _id
-- is computed rather than stored, which saves room and keeps it unique (conj_order
-- stays below 100); it needs SQLite 3.31 or later to read.
CREATE TABLE conjugation (
    _id                 INTEGER GENERATED ALWAYS AS (verbid * 100 + conj_order) VIRTUAL,
    verbid              INTEGER NOT NULL,
    pronounid           INTEGER,
    verb                TEXT NOT NULL,
    conjugation_type_id INTEGER NOT NULL,
    conj_order          INTEGER NOT NULL CHECK (conj_order BETWEEN 1 AND 99),
    voice_file          TEXT,
    -- Bit n set: the n-th form of the cell ("devo / debbo") departs from the regular
    -- paradigm of the verb's class. 0 for a regular form.
    irregular           INTEGER NOT NULL DEFAULT 0,
    PRIMARY KEY (verbid, conj_order)
) WITHOUT ROWID;

-- How a verb is used, for the notes printed beside its forms; a row only for a verb
-- that needs one. auxiliary_note names why the verb takes both auxiliaries (object,
-- destination, subject, modal, weather, either, meaning): the app has a text for each.
CREATE TABLE verb_usage (
    verbid             INTEGER PRIMARY KEY,
    third_person       INTEGER NOT NULL DEFAULT 0, -- used only in the third person
    auxiliary_note     TEXT,
    auxiliary_examples TEXT, -- Italian examples, for the kind "meaning"
    also_spelled       TEXT, -- the other spelling of a verb spelled two ways
    homograph          TEXT  -- the other verb spelled alike, with its first form
);

CREATE TABLE favourite (
    _id    INTEGER PRIMARY KEY,
    verbid INTEGER
);

CREATE TABLE history (
    _id       INTEGER PRIMARY KEY,
    verbid    INTEGER,
    timestamp REAL
);

CREATE INDEX favourite_verbid ON favourite(verbid);
CREATE INDEX history_verbid ON history(verbid);
CREATE INDEX history_timestamp ON history(timestamp);
