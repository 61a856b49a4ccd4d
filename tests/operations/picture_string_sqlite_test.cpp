// Picture strings in a database file, as programs keep them.

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "pictures.h"
#include "plain_image.h"
#include "session.h"
#include "temporary_folder.h"

namespace tarvo::test {
namespace {

class Database {
public:
    explicit Database(const std::string& path) {
        sqlite3* opened = nullptr;
        const int code = sqlite3_open(path.c_str(), &opened);
        database_.reset(opened);
        check(code == SQLITE_OK);
    }

    void store(int id, std::string_view bytes) {
        run("CREATE TABLE IF NOT EXISTS pictures (id INTEGER PRIMARY KEY, bytes BLOB NOT NULL)");
        const Statement insert = prepare("INSERT INTO pictures (id, bytes) VALUES (?, ?)");
        check(sqlite3_bind_int(insert.get(), 1, id) == SQLITE_OK);
        check(sqlite3_bind_blob64(insert.get(), 2, bytes.data(), bytes.size(), SQLITE_TRANSIENT) == SQLITE_OK);
        check(sqlite3_step(insert.get()) == SQLITE_DONE);
    }

    std::string load(int id) {
        const Statement select = prepare("SELECT bytes FROM pictures WHERE id = ?");
        check(sqlite3_bind_int(select.get(), 1, id) == SQLITE_OK);
        check(sqlite3_step(select.get()) == SQLITE_ROW);
        const auto* const bytes = static_cast<const char*>(sqlite3_column_blob(select.get(), 0));
        return {bytes, static_cast<std::size_t>(sqlite3_column_bytes(select.get(), 0))};
    }

private:
    struct Close {
        void operator()(sqlite3* database) const { sqlite3_close(database); }
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };
    using Statement = std::unique_ptr<sqlite3_stmt, Close>;

    void check(bool good) const {
        if (!good) throw std::runtime_error(sqlite3_errmsg(database_.get()));
    }
    void run(const char* sql) { check(sqlite3_exec(database_.get(), sql, nullptr, nullptr, nullptr) == SQLITE_OK); }
    Statement prepare(const char* sql) {
        sqlite3_stmt* statement = nullptr;
        check(sqlite3_prepare_v2(database_.get(), sql, -1, &statement, nullptr) == SQLITE_OK);
        return Statement(statement);
    }

    std::unique_ptr<sqlite3, Close> database_;
};

TEST(PictureStringsInADatabase, GiveTheSamePicturesWhenItIsOpenedAgain) {
    const TemporaryFolder folder;
    const std::string path = folder.file("pictures.db");
    Session session;
    Random random(2005);
    std::vector<ObjectRef> pictures;
    {
        Database database(path);
        for (const int depth : {16, 24, 32}) {
            for (const int mask_depth : {0, 32}) {
                pictures.push_back(
                    random_picture(session, random, {.depth = depth, .mask_depth = mask_depth}, 123, 45));
                const Value string = session.call(pictures.back(), "TRV_ConvertToString");
                ASSERT_TRUE(object_in(string));
                database.store(static_cast<int>(pictures.size()),
                               dynamic_cast<host::StringObject&>(*object_in(string).get()).bytes());
            }
        }
    }
    ASSERT_EQ(pictures.size(), 6u);
    ASSERT_GT(std::filesystem::file_size(path), 6u * 123 * 45 * 3);

    Database database(path);
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        SCOPED_TRACE(i);
        const Picture& kept = pixels(pictures[i]);
        const ObjectRef string = session.host.new_string(database.load(static_cast<int>(i + 1)));
        const Value read = session.call(string, "TRV_ConvertToPicture");
        ASSERT_TRUE(picture_in(read));
        PlainImage colors = read_image(kept);
        for (std::uint32_t& color : colors.colors) color &= 0xFFFFFF;  // the unused byte is not kept
        EXPECT_EQ(difference(*picture_in(read), colors, kept.depth()), "");
        ASSERT_EQ(static_cast<bool>(picture_in(read)->mask()), static_cast<bool>(kept.mask()));
        if (!kept.mask()) continue;
        PlainImage levels = read_image(pixels(kept.mask()), true);
        for (std::uint32_t& level : levels.colors) level = (level >> 16 & 255) * 0x010101;
        EXPECT_EQ(difference(pixels(picture_in(read)->mask()), levels, 32, true), "");
    }
}

}  // namespace
}  // namespace tarvo::test
