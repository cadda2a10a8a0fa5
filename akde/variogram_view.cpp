#include "akde/variogram_view.h"

namespace wxl::akde {

using namespace movement_models;

pictures::VariogramPicture variogram_picture_of(const VariogramView& view) {
    pictures::VariogramPicture picture;
    const bool days = 0.5 * view.Duration > 4.0 * 86400.0;
    const double second = 1.0 / (days ? 86400.0 : 3600.0);
    const double area = view.Metres ? 1e-6 : 1.0;
    picture.Title = view.Title;
    picture.LagUnit = days ? "days" : "hours";
    picture.AreaUnit = view.Metres ? "km²" : "";
    for (const VariogramPoint& point : view.Points) {
        const Interval limits = variogram_interval(point, view.Duration);
        picture.Points.push_back({second * point.Lag, area * limits.Low, area * limits.Estimate, area * limits.High});
    }
    if (!view.Chosen) return picture;
    picture.Model = model_title(view.Chosen->Model.Kind, view.Chosen->Shape);
    const auto limits = area_interval(1.0, view.Chosen->DofArea);
    constexpr int kPoints = 400;
    for (int k = 0; k <= kPoints && !view.Points.empty(); ++k) {
        // Closer together where the curve bends.
        const double share = static_cast<double>(k) / kPoints;
        const double lag = view.Points.back().Lag * share * share;
        const double value = area * model_semivariance(*view.Chosen, lag);
        picture.Curve.push_back(
            {second * lag, limits ? value * limits->Low : value, value, limits ? value * limits->High : value});
    }
    return picture;
}

}  // namespace wxl::akde
