#include "AbstractServerModel.h"

const QString& AbstractServerModel::noName()
{
    static const QString empty;
    return empty;
}
