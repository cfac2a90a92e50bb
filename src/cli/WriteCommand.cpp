// SPDX-License-Identifier: GPL-3.0-or-later
#include "Commands.h"

#include "tags/TagWriter.h"

namespace {

int writeUsage()
{
    cli::error(QStringLiteral("usage: tarnwell-cli write FILE [--title T] [--artist A] [--album B]"));
    return cli::usageError;
}

} // namespace

int cli::write(const QStringList &args)
{
    QString file;
    TagEdit edit;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString &arg = args[i];
        FieldEdit *field = nullptr;
        QString name = arg;
        std::optional<QString> inlineValue;
        if (const qsizetype eq = arg.indexOf(u'='); arg.startsWith(u"--") && eq > 0) {
            name = arg.first(eq);
            inlineValue = arg.sliced(eq + 1);
        }
        if (name == u"--title")
            field = &edit.title;
        else if (name == u"--artist")
            field = &edit.artist;
        else if (name == u"--album")
            field = &edit.album;
        if (field) {
            if (!inlineValue && i + 1 >= args.size())
                return writeUsage();
            // "" removes the tag; an option not given keeps the file's value.
            *field = FieldEdit::set(inlineValue ? *inlineValue : args[++i]);
        } else if (arg.startsWith(u"--") || !file.isEmpty()) {
            return writeUsage();
        } else {
            file = arg;
        }
    }
    if (file.isEmpty())
        return writeUsage();
    const SaveResult result = saveTagsWithReason(file, edit);
    if (!result) {
        error(result.reason);
        return 1;
    }
    return 0;
}
