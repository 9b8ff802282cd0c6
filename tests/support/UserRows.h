#pragma once

// What a learner owns in the working copy, each table as one string in row
// order, so two copies compare with one QCOMPARE. The tables are read without
// their indexes: a damaged index must not hide a lost row.

namespace norvella::test::UserRows {

inline constexpr char Favourites[] =
        "SELECT group_concat(verbid) FROM (SELECT verbid FROM favourite NOT INDEXED ORDER BY _id)";
inline constexpr char History[] = "SELECT group_concat(verbid || ':' || timestamp) FROM (SELECT verbid, timestamp FROM "
                                  "history NOT INDEXED ORDER BY _id)";
inline constexpr char PracticeCards[] =
        "SELECT group_concat(row, ';') FROM (SELECT _id || ',' || verbid || ',' || tense || ',' || person || ',' || "
        "repetitions || ',' || interval || ',' || easiness || ',' || due || ',' || lapses AS row FROM practice_card "
        "NOT INDEXED ORDER BY _id)";
inline constexpr char PracticeReviews[] =
        "SELECT group_concat(row, ';') FROM (SELECT _id || ',' || cardid || ',' || time || ',' || quality || ',' || "
        "result AS row FROM practice_review NOT INDEXED ORDER BY _id)";

} // namespace norvella::test::UserRows
